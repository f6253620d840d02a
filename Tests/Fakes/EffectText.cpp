#include "Tests/Fakes/EffectText.h"

#include <variant>

namespace marrowby {

namespace {

using Effect = UnlockMachine::Effect;
using Phase = UnlockMachine::Phase;

std::string onOff(bool on) {
    return on ? "on" : "off";
}

struct OverlayText {
    std::string operator()(const OverlayPhase::Failure& failure) {
        return "failure: " + std::string(title(failure.failure));
    }
    std::string operator()(const OverlayPhase::Hidden&) { return "hidden"; }
    std::string operator()(const OverlayPhase::Closed&) { return "closed"; }
    std::string operator()(const OverlayPhase::Scanning&) { return "scanning"; }
    std::string operator()(const OverlayPhase::Prompt&) { return "prompt"; }
    std::string operator()(const OverlayPhase::Success&) { return "success"; }
    std::string operator()(const OverlayPhase::Leaving&) { return "leaving"; }
};

struct EffectText {
    std::string operator()(const Effect::Overlay& overlay) {
        return "overlay " + text(overlay.phase);
    }
    std::string operator()(const Effect::StartCamera& start) {
        return "startCamera " + std::to_string(static_cast<std::int64_t>(start.id));
    }
    std::string operator()(const Effect::ListenForSpace& listen) {
        return "listenForSpace " + onOff(listen.on);
    }
    std::string operator()(const Effect::WatchActivity& watch) {
        return "watchActivity " + onOff(watch.on);
    }
    std::string operator()(const Effect::PasswordHealth& changed) {
        const PasswordHealth& health = changed.health;
        return "health " + std::to_string(health.failures) +
               (health.suspended ? " suspended" : "") + (health.needsNotice ? " notice" : "");
    }
    std::string operator()(const Effect::Log& log) { return "log: " + log.line.text(); }
    std::string operator()(const Effect::StopCamera&) { return "stopCamera"; }
    std::string operator()(const Effect::TypePassword&) { return "typePassword"; }
    std::string operator()(const Effect::AskToUpdatePassword&) { return "askToUpdatePassword"; }
};

struct PhaseText {
    std::string operator()(const Phase::Scanning&) { return "scanning"; }
    std::string operator()(const Phase::Verifying&) { return "verifying"; }
    std::string operator()(const Phase::Failed&) { return "failed"; }
    std::string operator()(const Phase::Idle&) { return "idle"; }
    std::string operator()(const Phase::Armed&) { return "armed"; }
    std::string operator()(const Phase::Typing&) { return "typing"; }
};

}  // namespace

std::string text(const OverlayPhase& phase) {
    return std::visit(OverlayText(), phase);
}

std::string text(const UnlockMachine::Effect& effect) {
    return std::visit(EffectText(), effect);
}

std::vector<std::string> texts(const std::vector<UnlockMachine::Effect>& effects) {
    std::vector<std::string> texts;
    texts.reserve(effects.size());
    for (const Effect& effect : effects)
        texts.push_back(text(effect));
    return texts;
}

std::string text(const UnlockMachine::Phase& phase) {
    return std::visit(PhaseText(), phase);
}

}  // namespace marrowby
