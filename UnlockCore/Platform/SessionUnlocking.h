// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace marrowby {

/// How the lock screen of this session is opened.
enum class LockOpening : std::uint8_t {
    /// The stored password is typed into it.
    typing,
    /// The desktop is asked to open it.
    asking,
    /// It could be asked, but the administrator forbids that.
    forbidden,
    /// No safe way is known.
    unsupported,
};

/// Whether nothing can open the lock, whatever the user sets up.
[[nodiscard]] constexpr bool isClosed(LockOpening opening) {
    return opening == LockOpening::forbidden || opening == LockOpening::unsupported;
}

/// How a Wayland session's lock is opened: by its desktop, if that is one that can be asked, before
/// typing.
[[nodiscard]] LockOpening lockOpening(bool canAskDesktop, bool isAskingForbidden, bool canType);

/// Of the administrator's policy file. A line `ask-desktop-to-unlock = no` forbids it, and so does
/// any other value but yes.
[[nodiscard]] bool isAskingForbiddenBy(std::string_view policy);

/// The session and its desktop's shell at one moment, as the system services tell it.
struct SessionUnlockFacts {
    enum class Shell : std::uint8_t {
        none,
        /// Another user's program has the shell's name.
        foreign,
        own
    };

    /// The session's lock hint; nothing where nobody answers.
    std::optional<bool> isLocked;
    /// Since the hint turned true by its own signal in this run; nothing where that was not seen.
    std::optional<TimeInterval> lockedFor;
    bool isOwn = false;
    bool isActive = false;
    bool hasSeat = false;
    /// Nothing where unknown.
    std::optional<bool> isGoingToSleep;
    Shell shell = Shell::none;
    /// By the administrator's policy.
    bool isForbidden = false;

    friend bool operator==(const SessionUnlockFacts&, const SessionUnlockFacts&) = default;
};

/// Asks the desktop to open this session's lock. Main thread; callbacks come on it, too, later, at
/// most once, and never where a service has gone.
class SessionUnlocking {
  public:
    virtual ~SessionUnlocking() = default;
    /// Cheap; may change, with onChange.
    [[nodiscard]] virtual LockOpening opening() const = 0;
    /// Whether the session is known, so that it can be asked for. As opening().
    [[nodiscard]] virtual bool isSessionKnown() const = 0;
    std::function<void()> onChange;

    /// Everything anew.
    virtual void read(std::function<void(const SessionUnlockFacts&)> onRead) = 0;
    /// The answer tells whether the request was taken, not whether the lock opened. The error is
    /// the service's text.
    virtual void ask(std::function<void(const std::expected<void, std::string>&)> onAnswer) = 0;
    /// Asks the desktop to lock the session, which it need not do.
    virtual void lockAgain() = 0;
};

}  // namespace marrowby
