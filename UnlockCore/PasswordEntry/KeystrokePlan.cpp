// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/PasswordEntry/KeystrokePlan.h"

#include <algorithm>

namespace marrowby {

namespace {

using Actions = std::vector<KeystrokeAction>;

bool isHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

void addPress(Actions& actions, const KeyPress& press, TimeInterval pause) {
    actions.emplace_back(KeystrokeAction::Post{press});
    actions.emplace_back(KeystrokeAction::Pause{pause});
}

void addTap(Actions& actions, EditingKey key, bool withCommand, TimeInterval pause) {
    addPress(actions, {.key = key, .down = true, .withCommand = withCommand}, pause);
    addPress(actions, {.key = key, .down = false, .withCommand = withCommand}, pause);
}

/// `key` with `modifier` held. Command is told by the events until it is released.
void addShortcut(Actions& actions, EditingKey modifier, EditingKey key, TimeInterval pause) {
    const bool withCommand = modifier == EditingKey::command;
    addPress(actions, {.key = modifier, .down = true, .withCommand = withCommand}, pause);
    addTap(actions, key, withCommand, pause);
    addPress(actions, {.key = modifier, .down = false, .withCommand = false}, pause);
}

/// A key that types nothing, for lockers that swallow the first one.
void addWaking(Actions& actions, const KeyPace& pace) {
    addTap(actions, EditingKey::shift, false, pace.shortcut);
    actions.emplace_back(KeystrokeAction::Pause{pace.wake});
    actions.emplace_back(KeystrokeAction::LockCheck{});
}

void addClearing(Actions& actions, FieldClearing clearing, TimeInterval pause) {
    switch (clearing) {
        case FieldClearing::toTheEndThenBack:
            addShortcut(actions, EditingKey::command, EditingKey::rightArrow, pause);
            addShortcut(actions, EditingKey::command, EditingKey::backspace, pause);
            break;
        // The one shortcut that clears the field of every X11 locker.
        case FieldClearing::controlU:
            addShortcut(actions, EditingKey::control, EditingKey::letterU, pause);
            break;
    }
}

void addText(Actions& actions, std::span<const char16_t> units, TimeInterval pause) {
    std::size_t offset = 0;
    while (offset < units.size()) {
        std::size_t count = std::min(KeystrokePlan::chunkLength, units.size() - offset);
        if (count == KeystrokePlan::chunkLength && isHighSurrogate(units[offset + count - 1])) {
            --count;
        }
        actions.emplace_back(KeystrokeAction::LockCheck{});
        for (const bool down : {true, false}) {
            actions.emplace_back(
                KeystrokeAction::Text{.offset = offset, .count = count, .down = down});
            actions.emplace_back(KeystrokeAction::Pause{pause});
        }
        offset += count;
    }
}

}  // namespace

KeystrokePlan KeystrokePlan::make(std::span<const char16_t> units, FieldClearing clearing,
                                  const KeyPace& pace) {
    KeystrokePlan plan;
    plan.actions.emplace_back(KeystrokeAction::LockCheck{});
    if (pace.tapsFirst) addWaking(plan.actions, pace);
    addClearing(plan.actions, clearing, pace.shortcut);
    addText(plan.actions, units, pace.afterText);
    plan.actions.emplace_back(KeystrokeAction::LockCheck{});
    addTap(plan.actions, EditingKey::enter, false, pace.afterReturn);
    return plan;
}

std::vector<EditingKey> KeystrokePlan::keys(FieldClearing clearing) {
    std::vector<EditingKey> keys;
    for (const auto& action : make({}, clearing, {}).actions) {
        const auto* post = std::get_if<KeystrokeAction::Post>(&action);
        if (post != nullptr && std::ranges::find(keys, post->press.key) == keys.end()) {
            keys.push_back(post->press.key);
        }
    }
    return keys;
}

std::optional<Phrase> typablepassword::objection(std::span<const std::uint8_t> password) {
    const bool hasControl = std::ranges::any_of(
        password, [](std::uint8_t byte) { return byte < 0x20 || byte == 0x7F; });
    if (!hasControl) return std::nullopt;
    return Phrase(
        "The password has a line break or another control character in it, which can’t be typed "
        "at the lock screen.");
}

}  // namespace marrowby
