// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Foundation/Text.h"
#include "UnlockCore/PasswordEntry/KeystrokePlan.h"

#include <utility>
#include <variant>

namespace marrowby {

std::string description(KeystrokeError error, const PlatformWords& words) {
    switch (error) {
        case KeystrokeError::noAccessibility:
            return translated(
                "Marrowby Unlock needs {right} to type your password at the lock screen.",
                {{"right", words.typing.right}});
        case KeystrokeError::notLocked:
            return translated("The {computer} isn’t locked any more, so nothing was typed.",
                              {{"computer", words.computer}});
        case KeystrokeError::invalidText:
            return translated("The saved password isn’t valid text.");
        case KeystrokeError::eventFailed:
            return translated("Couldn’t make a key press.");
        case KeystrokeError::noLocker:
            return translated(
                "Nothing was typed: no screen locker that Marrowby Unlock knows has the "
                "keyboard.");
    }
    return {};
}

namespace {

using Step = std::expected<void, KeystrokeError>;

struct Perform {
    KeyEvents& keyEvents;
    KeyEventSource& source;
    std::span<const char16_t> units;
    const std::function<bool()>& stillLocked;

    Step operator()(const KeystrokeAction::Post& post) const {
        return posted(source.post(post.press));
    }
    Step operator()(const KeystrokeAction::Text& text) const {
        return posted(source.postText(units.subspan(text.offset, text.count), text.down));
    }
    Step operator()(const KeystrokeAction::Pause& pause) const {
        keyEvents.pause(pause.duration);
        return {};
    }
    Step operator()(const KeystrokeAction::LockCheck& /*check*/) const {
        if (!stillLocked() || !source.isUndisturbed())
            return std::unexpected(KeystrokeError::notLocked);
        return {};
    }

  private:
    [[nodiscard]] Step posted(bool success) const {
        if (success) return {};
        return std::unexpected(source.isUndisturbed() ? KeystrokeError::eventFailed
                                                      : KeystrokeError::notLocked);
    }
};

KeystrokeError errorOf(UTF16Error error) {
    switch (error) {
        case UTF16Error::malformed:
            return KeystrokeError::invalidText;
        case UTF16Error::noSecretMemory:
            break;
    }
    return KeystrokeError::eventFailed;
}

}  // namespace

KeystrokeTyping keystrokeinjector::typePassword(KeyEvents& keyEvents,
                                                std::span<const std::uint8_t> password,
                                                std::function<bool()> stillLocked,
                                                const std::function<void()>& onFirstKey) {
    const auto failed = [](KeystrokeError error) {
        return KeystrokeTyping(std::unexpected(error), nullptr, {});
    };
    if (!keyEvents.canType()) return failed(KeystrokeError::noAccessibility);
    const auto units = decodeUTF8(password);
    if (!units) return failed(errorOf(units.error()));

    const FieldClearing clearing = keyEvents.clearing();
    auto source = keyEvents.makeSource(units->values(), KeystrokePlan::keys(clearing));
    if (!source) return failed(KeystrokeError::eventFailed);
    if (!source->isAdmitted(stillLocked))
        return failed(stillLocked() ? KeystrokeError::noLocker : KeystrokeError::notLocked);
    const KeystrokePlan plan = KeystrokePlan::make(units->values(), clearing, source->pace());
    if (onFirstKey) onFirstKey();
    Step outcome;
    const Perform perform{.keyEvents = keyEvents,
                          .source = *source,
                          .units = units->values(),
                          .stillLocked = stillLocked};
    for (const auto& action : plan.actions) {
        outcome = std::visit(perform, action);
        if (!outcome) break;
    }
    return {outcome, std::move(source), std::move(stillLocked)};
}

}  // namespace marrowby
