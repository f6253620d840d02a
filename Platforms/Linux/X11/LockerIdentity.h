// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// The program behind a client of the display, from the kernel.
struct ClientProgram {
    std::int64_t process = 0;
    std::int64_t parent = 0;
    /// The process's own name, at most 15 bytes; proves nothing.
    std::string name{};
    /// Path of its executable; empty when unreadable, as for setuid programs.
    std::string path{};
    /// In this process's mount namespace, and its executable is still the file at `path`.
    bool isInOurFiles = false;
    /// Only root can replace or change the file at `path`.
    bool isRootsAlone = false;
    /// The process no longer exists.
    bool hasEnded = false;
};

/// What decides who would get a key on the display, in the order of the checks.
struct LockerFacts {
    struct Cover {
        bool overrideRedirect = false;
        std::optional<ClientProgram> owner;
    };

    /// Another client has grabbed the keyboard.
    bool isKeyboardHeld = false;
    /// One per monitor; `nullopt` where no window covers it.
    std::vector<std::optional<Cover>> covers;
    /// Who got the test key; `nullopt` when nobody or more than one client did.
    std::optional<ClientProgram> receiver;
};

struct LockerDoubt {
    enum class Fact {
        keyboardIsFree,
        monitorIsUncovered,
        coverIsManaged,
        keyReachesNobody,
        coverIsAnothers,
        programIsHidden,
        programIsElsewhere,
        programIsChangeable,
        programIsInterpreter,
        programIsUnknown,
        keysAreReserved,
        dialogIsMissing,
    };
    Fact fact{};
    /// Path of the program that grabbed the keyboard, if known.
    std::string path{};
    friend bool operator==(const LockerDoubt&, const LockerDoubt&) = default;
};

[[nodiscard]] std::string description(const LockerDoubt& doubt);

/// Delays and quirks of a locker's password field.
struct LockerPace {
    /// Delay after the key that wakes it.
    TimeInterval wake{};
    /// Delay between the keys of a shortcut, for lockers that read the modifiers late.
    TimeInterval shortcut{};
    /// Delay from remapping a key to its first press.
    TimeInterval lending{};
    /// The helper that shows its password field.
    std::string_view dialog{};
    /// What tells that the helper takes keys.
    enum class DialogSign {
        /// It has a window.
        window,
        /// It is connected; the locker keeps keys for it until it is up.
        client,
        /// It has handled `lockertiming::tapsOfDialog` taps, as raw keys.
        rawKeys,
    };
    DialogSign dialogSign = DialogSign::window;
    /// The field is cleared by a key that gives Control-U without Control: a helper that asks for
    /// the modifiers when it handles a raw key is too late for a shortcut.
    bool erasesByOneKey = false;
    /// Keys before the event loop starts are lost: i3lock accepts a password then, but the request
    /// to leave its loop is forgotten when the loop starts.
    bool needsEventLoop = false;
};

struct KnownScreenLocker {
    std::string path;
    LockerPace pace;
};

namespace lockeridentity {

/// Whether keys go to a screen locker: one with a known executable, or one that the owner has
/// confirmed. The client that grabbed the keyboard must also have covered the screen, itself or
/// through its parent or a child.
[[nodiscard]] std::expected<KnownScreenLocker, LockerDoubt> judge(
    const LockerFacts& facts, const std::vector<std::string>& vouchedPaths);

/// The facts with the process that took over the connection of the receiver, which has ended: the
/// only one of `heirs`, or the only one that passes judge(). `nullopt` if none or several do.
[[nodiscard]] std::optional<LockerFacts> inherited(const LockerFacts& facts,
                                                   const std::vector<ClientProgram>& heirs,
                                                   const std::vector<std::string>& vouchedPaths);

/// Whether the program is `locker`'s dialog. A lie here affects only when the keys are typed.
[[nodiscard]] bool isDialog(const ClientProgram& program, const ClientProgram& locker,
                            const LockerPace& pace);

/// Whether the executable is an interpreter, whose path says nothing about the program it runs.
[[nodiscard]] bool isInterpreter(std::string_view path);

}  // namespace lockeridentity

}  // namespace marrowby
