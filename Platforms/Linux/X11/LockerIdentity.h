#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// The program behind a client of the display, as the kernel tells it.
struct ClientProgram {
    std::int64_t process = 0;
    std::int64_t parent = 0;
    /// What it calls itself, which proves nothing; at most 15 bytes.
    std::string name{};
    /// The file that it runs; empty where that is not told, as of a setuid program.
    std::string path{};
    /// It sees the same files as this process, and what it runs is what lies at `path` now.
    bool isInOurFiles = false;
    /// Nobody but root can put another file at `path` or change this one.
    bool isRootsAlone = false;
    /// No process has this number any more.
    bool hasEnded = false;
};

/// Who would get a key on an X display, asked for in this order.
struct LockerFacts {
    /// The topmost window that covers a monitor.
    struct Cover {
        bool overrideRedirect = false;
        std::optional<ClientProgram> owner;
    };

    /// Another client has grabbed the keyboard.
    bool isKeyboardHeld = false;
    /// One for each monitor; nothing where no window covers it.
    std::vector<std::optional<Cover>> covers;
    /// To whom a key went; nothing where it went to nobody, or to more than one.
    std::optional<ClientProgram> receiver;
};

/// The first fact that does not hold.
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
    /// Of the keyboard's holder, where that is known.
    std::string path{};
    friend bool operator==(const LockerDoubt&, const LockerDoubt&) = default;
};

/// For the log: which fact failed.
[[nodiscard]] std::string description(const LockerDoubt& doubt);

/// What a locker's field needs before it takes keys.
struct LockerPace {
    /// From the key that wakes it to the next.
    TimeInterval wake{};
    /// Between the keys of a shortcut: some look late at which modifiers are held.
    TimeInterval shortcut{};
    /// From lending a key a character to its first press.
    TimeInterval lending{};
    /// The program that it starts to show its field, which takes no keys before it has a window.
    std::string_view dialog{};
    /// That window can be found. xsecurelock's cannot, and the keys for it are kept until it
    /// stands.
    bool dialogIsOnScreen = true;
    /// Its field is cleared by ending the dialog, which Escape does; another comes up for the next
    /// key, and hears none from before its window stood. xscreensaver's looks so late at which
    /// modifiers are held, busy with each key that is lent meanwhile, that shortcuts fail.
    bool renewsDialog = false;
    /// What it takes before its event loop begins it accepts, and yet stays: i3lock's end of the
    /// loop is forgotten as the loop begins.
    bool needsEventLoop = false;
};

struct KnownScreenLocker {
    std::string path;
    LockerPace pace;
};

namespace lockeridentity {

/// Whether the keys go to a screen locker: one that is known by its executable, or that the owner
/// vouches for. The keyboard's holder must have covered the screen, itself or through its parent or
/// a child.
[[nodiscard]] std::expected<KnownScreenLocker, LockerDoubt> judge(
    const LockerFacts& facts, const std::vector<std::string>& vouchedPaths);

/// The facts with the process to which the receiver, which has ended, left its connection: the one
/// of `heirs` with which they hold, or the only one. Nothing where that is none or several.
[[nodiscard]] std::optional<LockerFacts> inherited(const LockerFacts& facts,
                                                   const std::vector<ClientProgram>& heirs,
                                                   const std::vector<std::string>& vouchedPaths);

/// Whether this is the dialog of `locker`, as far as the time of its keys depends on it.
[[nodiscard]] bool isDialog(const ClientProgram& program, const ClientProgram& locker,
                            const LockerPace& pace);

/// Runs whatever its user tells it to, so that its file says nothing about what it does.
[[nodiscard]] bool isInterpreter(std::string_view path);

}  // namespace lockeridentity

}  // namespace marrowby
