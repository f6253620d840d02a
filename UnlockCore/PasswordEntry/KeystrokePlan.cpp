#include "UnlockCore/PasswordEntry/KeystrokePlan.h"

#include "UnlockCore/Platform/KeyCodes.h"

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

void addTap(Actions& actions, std::uint32_t code, std::uint64_t flags, TimeInterval pause) {
    addPress(actions, {.code = code, .down = true, .flags = flags}, pause);
    addPress(actions, {.code = code, .down = false, .flags = flags}, pause);
}

/// `code` with Command held; the flag is set on the shortcut's keys only.
void addCommandShortcut(Actions& actions, std::uint32_t code) {
    constexpr TimeInterval pause = KeystrokePlan::editingPause;
    addPress(actions, {.code = mackey::command, .down = true, .flags = mackey::commandFlag}, pause);
    addTap(actions, code, mackey::commandFlag, pause);
    addPress(actions, {.code = mackey::command, .down = false, .flags = mackey::noFlags}, pause);
}

/// A key that types nothing, for lockers that swallow the first one.
void addWaking(Actions& actions, std::uint32_t code, TimeInterval pause, TimeInterval wake) {
    addTap(actions, code, 0, pause);
    actions.emplace_back(KeystrokeAction::Pause{wake});
    actions.emplace_back(KeystrokeAction::LockCheck{});
}

/// Moves the caret to the end and deletes what is before it.
void addMacClearing(Actions& actions) {
    if constexpr (KeystrokePlan::wakesLoginWindow) {
        addWaking(actions, mackey::leftShift, KeystrokePlan::editingPause,
                  KeystrokePlan::wakePause);
    }
    addCommandShortcut(actions, mackey::rightArrow);
    addCommandShortcut(actions, mackey::backspace);
}

/// Shift wakes the dialogs of lockers that swallow their first key, and Ctrl+U is the one shortcut
/// that clears the field of all of them.
void addX11Clearing(Actions& actions, const KeyPace& pace) {
    if (pace.tapsFirst) addWaking(actions, xkey::leftShift, pace.shortcut, pace.wake);
    if (!pace.clearsField) return;
    addPress(actions, {.code = xkey::leftControl, .down = true}, pace.shortcut);
    addTap(actions, xkey::letterU, 0, pace.shortcut);
    addPress(actions, {.code = xkey::leftControl, .down = false}, pace.shortcut);
}

void addText(Actions& actions, std::span<const char16_t> units) {
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
            actions.emplace_back(KeystrokeAction::Pause{KeystrokePlan::chunkPause});
        }
        offset += count;
    }
}

}  // namespace

KeystrokePlan KeystrokePlan::make(std::span<const char16_t> units, KeyDialect dialect,
                                  const KeyPace& pace) {
    KeystrokePlan plan;
    plan.actions.emplace_back(KeystrokeAction::LockCheck{});
    std::uint32_t returnKey = 0;
    switch (dialect) {
        case KeyDialect::macLoginWindow:
            addMacClearing(plan.actions);
            returnKey = mackey::returnKey;
            break;
        case KeyDialect::x11Locker:
            addX11Clearing(plan.actions, pace);
            returnKey = xkey::returnKey;
            break;
    }
    addText(plan.actions, units);
    plan.actions.emplace_back(KeystrokeAction::LockCheck{});
    addTap(plan.actions, returnKey, 0, editingPause);
    return plan;
}

std::vector<std::uint32_t> KeystrokePlan::codes(KeyDialect dialect) {
    std::vector<std::uint32_t> codes;
    for (const auto& action : make({}, dialect, {}).actions) {
        const auto* post = std::get_if<KeystrokeAction::Post>(&action);
        if (post != nullptr && std::ranges::find(codes, post->press.code) == codes.end()) {
            codes.push_back(post->press.code);
        }
    }
    return codes;
}

std::optional<std::string_view> typablepassword::objection(std::span<const std::uint8_t> password) {
    const bool hasControl = std::ranges::any_of(
        password, [](std::uint8_t byte) { return byte < 0x20 || byte == 0x7F; });
    if (!hasControl) return std::nullopt;
    return "The password has a line break or another control character in it, which can’t be typed "
           "at the lock screen.";
}

}  // namespace marrowby
