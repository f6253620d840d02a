#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// Which keys clear a lock screen's field, and what a key code means: macOS virtual key codes with
/// modifier flags, or X keysyms with modifiers as keys of their own.
enum class KeyDialect { macLoginWindow, x11Locker };

struct KeyPress {
    std::uint32_t code = 0;
    bool down = false;
    std::uint64_t flags = 0;
    friend bool operator==(const KeyPress&, const KeyPress&) = default;
};

/// What the field of an X11 locker needs before it takes keys.
struct KeyPace {
    /// A first key to wake it with, and how long after that it takes the next.
    bool tapsFirst = true;
    TimeInterval wake{0.300};
    /// Something may be in it.
    bool clearsField = true;
    /// Between the keys of a shortcut: some lockers look that late at which modifiers are held.
    TimeInterval shortcut{0.030};
};

/// Posts the keys of one typing; destroying it gives back whatever it borrowed from the keyboard.
/// One thread.
class KeyEventSource {
  public:
    virtual ~KeyEventSource() = default;
    /// Whether the keys would go to a screen locker, as far as the system can tell. To be asked
    /// once, before the first key. May wake it with a key that carries nothing, and blocks until
    /// it takes keys, at most while `stillLocked`.
    [[nodiscard]] virtual bool isAdmitted(const std::function<bool()>& /*stillLocked*/) {
        return true;
    }
    /// Known once admitted.
    [[nodiscard]] virtual KeyPace pace() const { return {}; }
    /// False when the event could not be made or the system is gone, or when it could not be told
    /// that it goes to the locker, which isUndisturbed() denies from then on.
    [[nodiscard]] virtual bool post(const KeyPress& press) = 0;
    /// A key event that carries UTF-16 text. Systems without such events type on `down` and do
    /// nothing on up.
    [[nodiscard]] virtual bool postText(std::span<const char16_t> units, bool down) = 0;
    /// Whether, as far as can be told, nobody else has pressed a key and the same lock screen
    /// stands since this was made.
    [[nodiscard]] virtual bool isUndisturbed() = 0;
    /// Waits as long as borrowed keys are still needed by a reader that is behind. Nothing is
    /// posted after.
    virtual void settle(const std::function<bool()>& stillLocked) = 0;
};

/// Synthetic keyboard input. Any thread.
class KeyEvents {
  public:
    virtual ~KeyEvents() = default;
    /// Whether the user lets this process post keys.
    [[nodiscard]] virtual bool isTrusted() const = 0;
    /// Whether the system then takes them; some refuse for a while what the user has allowed.
    [[nodiscard]] virtual bool mayPost() const { return true; }
    [[nodiscard]] bool canType() const { return isTrusted() && mayPost(); }
    [[nodiscard]] virtual KeyDialect dialect() const = 0;
    /// A source able to type all of `text` and to press each of `codes`, in any number and order;
    /// nothing where it cannot be had. No key is pressed yet. It may outlive this, but not what
    /// this was made of.
    [[nodiscard]] virtual std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> text, std::span<const std::uint32_t> codes) = 0;
    /// Screen lockers that the owner vouches for, by the paths of their executables.
    virtual void vouchFor(const std::vector<std::string>& /*paths*/) {}
    /// Told, on the typing thread, of each screen locker that nobody vouches for. Main thread; no
    /// source is being admitted meanwhile. Empty for nobody.
    virtual void setUnknownLockerHandler(const std::function<void(std::string path)>& /*handler*/) {
    }
    /// Blocks the calling thread.
    virtual void pause(TimeInterval duration) = 0;
};

}  // namespace marrowby
