// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/EffectText.h"

#include <variant>

namespace marrowby {

namespace {

using Effect = UnlockMachine::Effect;

std::string onOff(bool on) {
    return on ? "on" : "off";
}

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

}  // namespace

std::string text(const OverlayPhase& phase) {
    constexpr const char* names[] = {"failure: ", "hidden",  "closed", "scanning",
                                     "prompt",    "success", "leaving"};
    const auto* failure = std::get_if<OverlayPhase::Failure>(&phase);
    return names[phase.index()] + (failure ? inEnglish(title(failure->failure)) : "");
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
    constexpr const char* names[] = {"scanning", "verifying", "failed", "idle", "armed", "typing"};
    return names[phase.index()];
}

}  // namespace marrowby
