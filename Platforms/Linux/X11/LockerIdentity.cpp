// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/LockerIdentity.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <utility>

namespace marrowby {
namespace {

using Fact = LockerDoubt::Fact;

constexpr LockerPace i3lockPace{.wake = TimeInterval(0),
                                .shortcut = TimeInterval(0),
                                .lending = TimeInterval(0),
                                .needsEventLoop = true};
constexpr LockerPace xsecurelockPace{.wake = TimeInterval(0),
                                     .shortcut = TimeInterval(0),
                                     .lending = TimeInterval(0.030),
                                     .dialog = "auth_x11",
                                     .dialogSign = LockerPace::DialogSign::client};
constexpr LockerPace xscreensaverPace{.wake = TimeInterval(0),
                                      .dialog = "xscreensaver-auth",
                                      .dialogSign = LockerPace::DialogSign::rawKeys,
                                      .erasesByOneKey = true};
constexpr LockerPace matePace{.wake = TimeInterval(0),
                              .shortcut = TimeInterval(0.010),
                              .lending = TimeInterval(0.030),
                              .dialog = "mate-screensaver-dialog"};
/// Forked from mate-screensaver.
constexpr LockerPace xfcePace{.wake = TimeInterval(0),
                              .shortcut = TimeInterval(0.010),
                              .lending = TimeInterval(0.030),
                              .dialog = "xfce4-screensaver-dialog"};
/// For lockers that were not measured.
constexpr LockerPace carefulPace{
    .wake = TimeInterval(0.300), .shortcut = TimeInterval(0.030), .lending = TimeInterval(0.030)};

/// The kernel's limit for process names.
constexpr std::size_t longestName = 15;

constexpr std::string_view packageFolder = "/usr/bin/";

struct Known {
    std::string_view name;
    LockerPace pace;
};

/// Lockers that grab the keyboard themselves; their helpers need not be listed. ksmserver grabs it
/// for kscreenlocker_greet.
constexpr std::array knownLockers{Known{"i3lock", i3lockPace},
                                  Known{"xsecurelock", xsecurelockPace},
                                  Known{"xscreensaver", xscreensaverPace},
                                  Known{"mate-screensaver", matePace},
                                  Known{"xfce4-screensaver", xfcePace},
                                  Known{"slock", carefulPace},
                                  Known{"ksmserver", carefulPace}};

/// Prefixes of names; versions may follow.
constexpr std::array<std::string_view, 48> interpreters{
    "python", "pypy",    "perl",   "ruby",    "lua",  "gjs-console", "gjs",      "cjs-console",
    "cjs",    "node",    "nodejs", "deno",    "bun",  "java",        "mono",     "dotnet",
    "php",    "tclsh",   "wish",   "guile",   "sh",   "bash",        "dash",     "zsh",
    "fish",   "ksh",     "mksh",   "busybox", "awk",  "gawk",        "mawk",     "ld-linux",
    "ld.so",  "ld-musl", "qemu-",  "wine",    "gdb",  "emacs",       "electron", "env",
    "xterm",  "uxterm",  "expect", "octave",  "sbcl", "erl",         "qmlscene", "vim"};

std::string_view fileName(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

const Known* known(std::string_view name) {
    const auto found = std::ranges::find(knownLockers, name, &Known::name);
    return found == knownLockers.end() ? nullptr : &*found;
}

bool isFamily(const ClientProgram& one, const ClientProgram& other) {
    return one.process == other.process || one.parent == other.process ||
           other.parent == one.process;
}

}  // namespace

bool lockeridentity::isDialog(const ClientProgram& program, const ClientProgram& locker,
                              const LockerPace& pace) {
    if (program.parent != locker.process) return false;
    if (program.path.empty()) return program.name == pace.dialog.substr(0, longestName);
    return program.isRootsAlone && program.isInOurFiles && fileName(program.path) == pace.dialog;
}

bool lockeridentity::isInterpreter(std::string_view path) {
    const std::string_view name = fileName(path);
    return std::ranges::any_of(interpreters, [&](std::string_view beginning) {
        if (!name.starts_with(beginning)) return false;
        // Many programs' names begin with "sh": only digits, dots and dashes may follow.
        return std::ranges::all_of(name.substr(beginning.size()), [&](unsigned char character) {
            return beginning.starts_with("ld") || beginning.ends_with('-') ||
                   std::isdigit(character) || character == '.' || character == '-';
        });
    });
}

std::expected<KnownScreenLocker, LockerDoubt> lockeridentity::judge(
    const LockerFacts& facts, const std::vector<std::string>& vouchedPaths) {
    const auto doubt = [](Fact fact, std::string path = {}) {
        return std::unexpected(LockerDoubt{.fact = fact, .path = std::move(path)});
    };
    if (!facts.isKeyboardHeld) return doubt(Fact::keyboardIsFree);
    if (facts.covers.empty()) return doubt(Fact::monitorIsUncovered);
    for (const auto& cover : facts.covers) {
        if (!cover) return doubt(Fact::monitorIsUncovered);
        if (!cover->overrideRedirect) return doubt(Fact::coverIsManaged);
    }
    if (!facts.receiver) return doubt(Fact::keyReachesNobody);
    const ClientProgram& receiver = *facts.receiver;
    for (const auto& cover : facts.covers) {
        const bool isReceivers = cover && cover->owner && isFamily(*cover->owner, receiver);
        if (!isReceivers) return doubt(Fact::coverIsAnothers, receiver.path);
    }
    if (receiver.path.empty()) return doubt(Fact::programIsHidden);
    if (!receiver.isInOurFiles) return doubt(Fact::programIsElsewhere, receiver.path);
    if (!receiver.isRootsAlone) return doubt(Fact::programIsChangeable, receiver.path);
    if (isInterpreter(receiver.path)) return doubt(Fact::programIsInterpreter, receiver.path);
    const std::string_view name = fileName(receiver.path);
    const Known* const locker = known(name);
    const bool isPackaged =
        locker != nullptr && receiver.path == std::string(packageFolder).append(name);
    if (!isPackaged && std::ranges::find(vouchedPaths, receiver.path) == vouchedPaths.end())
        return doubt(Fact::programIsUnknown, receiver.path);
    return KnownScreenLocker{.path = receiver.path,
                             .pace = locker != nullptr ? locker->pace : carefulPace};
}

std::optional<LockerFacts> lockeridentity::inherited(const LockerFacts& facts,
                                                     const std::vector<ClientProgram>& heirs,
                                                     const std::vector<std::string>& vouchedPaths) {
    if (!facts.receiver) return std::nullopt;
    std::vector<LockerFacts> all;
    for (const ClientProgram& heir : heirs) {
        LockerFacts& one = all.emplace_back(facts);
        one.receiver = heir;
        for (auto& cover : one.covers) {
            if (cover && cover->owner && cover->owner->process == facts.receiver->process)
                cover->owner = heir;
        }
    }
    if (all.size() > 1) {
        std::erase_if(
            all, [&](const LockerFacts& one) { return !judge(one, vouchedPaths).has_value(); });
    }
    return all.size() == 1 ? std::optional(all.front()) : std::nullopt;
}

std::string description(const LockerDoubt& doubt) {
    // File names may contain control characters.
    std::string path = doubt.path;
    std::ranges::replace_if(
        path, [](unsigned char character) { return character < 0x20 || character == 0x7F; }, '?');
    const std::string holder = path.empty() ? "the program that holds the keyboard"
                                            : "“" + path + "”, which holds the keyboard,";
    switch (doubt.fact) {
        case Fact::keyboardIsFree:
            return "no program holds the keyboard";
        case Fact::monitorIsUncovered:
            return "no window covers the screen";
        case Fact::coverIsManaged:
            return "the window that covers the screen is an ordinary one";
        case Fact::keyReachesNobody:
            return "a key reaches nobody, or more than one program";
        case Fact::coverIsAnothers:
            return holder + " isn’t the one that covers the screen";
        case Fact::programIsHidden:
            return "the system doesn’t tell which program holds the keyboard";
        case Fact::programIsElsewhere:
            return holder + " sees other files than this program, or its file was replaced";
        case Fact::programIsChangeable:
            return holder + " can be changed by others than root";
        case Fact::programIsInterpreter:
            return holder + " runs whatever it is told to";
        case Fact::programIsUnknown:
            return holder + " isn’t a known screen locker";
        case Fact::keysAreReserved:
            return "other programs have reserved too many keys";
        case Fact::dialogIsMissing:
            return holder + " hasn’t shown its field";
    }
    return {};
}

}  // namespace marrowby
