// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// The keys that wake a lock screen, clear its field and enter it. Text is typed without them.
enum class EditingKey { shift, control, command, letterU, rightArrow, backspace, enter };

/// The shortcuts that clear a lock screen's field.
enum class FieldClearing {
    /// Command with Right Arrow, Command with Backspace.
    toTheEndThenBack,
    controlU,
};

struct KeyPress {
    EditingKey key = EditingKey::shift;
    bool down = false;
    /// The event says that Command is held.
    bool withCommand = false;
    friend bool operator==(const KeyPress&, const KeyPress&) = default;
};

/// What a lock screen's field needs before it takes keys.
struct KeyPace {
    /// Press a key first to wake it, and how long until it takes the next.
    bool tapsFirst = true;
    TimeInterval wake{0.300};
    /// After each of a shortcut's keys: some lockers read the held modifiers late.
    TimeInterval shortcut{0.030};
    /// After each event of a chunk of text, and of Return.
    TimeInterval afterText{0.004};
    TimeInterval afterReturn{0.012};
};

/// Posts the keys of one typing. Destroying it returns keys borrowed from the keyboard layout. One
/// thread.
class KeyEventSource {
  public:
    virtual ~KeyEventSource() = default;
    /// Whether keys would reach a screen locker, as far as the system can tell. Call once, before
    /// the first key. May wake the locker with a key that types nothing; blocks until it takes
    /// keys, at most while `stillLocked`.
    [[nodiscard]] virtual bool isAdmitted(const std::function<bool()>& /*stillLocked*/) {
        return true;
    }
    /// Valid after isAdmitted().
    [[nodiscard]] virtual KeyPace pace() const { return {}; }
    /// False when the event could not be made, the system is gone, or the key may not have reached
    /// the locker; in the last case isUndisturbed() stays false.
    [[nodiscard]] virtual bool post(const KeyPress& press) = 0;
    /// A key event that carries UTF-16 text. Systems without such events type on `down` and do
    /// nothing on up.
    [[nodiscard]] virtual bool postText(std::span<const char16_t> units, bool down) = 0;
    /// Whether, as far as the system can tell, nobody else pressed a key and the same locker is up
    /// since this was made.
    [[nodiscard]] virtual bool isUndisturbed() = 0;
    /// Blocks while a slow reader still needs the borrowed keys. Nothing is posted afterwards.
    virtual void settle(const std::function<bool()>& stillLocked) = 0;
};

/// Synthetic keyboard input. Any thread.
class KeyEvents {
  public:
    virtual ~KeyEvents() = default;
    /// Whether the user lets this process post keys.
    [[nodiscard]] virtual bool isTrusted() const = 0;
    /// Whether the system accepts them now; some refuse temporarily.
    [[nodiscard]] virtual bool mayPost() const { return true; }
    [[nodiscard]] bool canType() const { return isTrusted() && mayPost(); }
    [[nodiscard]] virtual FieldClearing clearing() const = 0;
    /// A source that can type `text` and press each of `keys`; null where none can be had. Presses
    /// nothing yet. May outlive this object, but not the services it was made of.
    [[nodiscard]] virtual std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> text, std::span<const EditingKey> keys) = 0;
    /// Shows the password field of a screen locker that is slow to do so, by a key that types
    /// nothing and reaches that locker only. Blocks until the field is there, at most while
    /// `stillLocked`; nothing where that needs no key or keys would not be admitted.
    virtual void wakeField(const std::function<bool()>& /*stillLocked*/) {}
    /// Executable paths of the screen lockers that the owner trusts.
    virtual void vouchFor(const std::vector<std::string>& /*paths*/) {}
    /// Called on the typing thread for each screen locker that is not trusted; may be empty. Set on
    /// the main thread while no source is being admitted.
    virtual void setUnknownLockerHandler(const std::function<void(std::string path)>& /*handler*/) {
    }
    /// Blocks the calling thread.
    virtual void pause(TimeInterval duration) = 0;
};

}  // namespace marrowby
