// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/LockerWindows.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Window = LockerWindows::Window;

constexpr Rect whole{.x = 0, .y = 0, .width = 1024, .height = 640};

Window shown(const char* instanceName, const char* className, const Rect& frame = whole) {
    return {instanceName, className, true, true, frame};
}

TEST(LockerWindows, findsTheLockHolder) {
    const Window i3lock = shown("i3lock", "i3lock");
    Window managed = i3lock;
    managed.overrideRedirect = false;
    Window unmapped = i3lock;
    unmapped.mapped = false;
    const Window saver = shown("xscreensaver", "XScreenSaver");
    Window hiddenSaver = saver;
    hiddenSaver.mapped = false;
    const Window menu = shown("panel", "Panel", {.x = 10, .y = 10, .width = 200, .height = 300});
    const auto ofProcess = [](const char* program, const Rect& frame) {
        Window window = shown("", "", frame);
        window.program = program;
        return window;
    };
    const Rect dot{.x = 0, .y = 0, .width = 1, .height = 1};
    const Rect inset{.x = 1, .y = 1, .width = 1022, .height = 638};
    const Rect half{.x = 0, .y = 0, .width = 512, .height = 640};

    const struct {
        const char* what;
        std::vector<Window> windows;
        std::optional<std::string> screenSaverState;
        std::optional<KnownLocker> locker;
    } cases[] = {
        {"an empty display", {}, {}, {}},
        {"a menu", {menu}, {}, {}},
        {"i3lock above a menu", {menu, i3lock}, {}, KnownLocker::i3lock},
        {"i3lock on half of the screen", {shown("i3lock", "i3lock", half)}, {}, {}},
        {"i3lock beside the screen",
         {shown("i3lock", "i3lock", {.x = 512, .y = 0, .width = 1024, .height = 640})},
         {},
         {}},
        {"a window that a window manager may move", {managed}, {}, {}},
        {"i3lock before it shows itself", {unmapped}, {}, {}},
        {"another full-screen program", {shown("game", "Game")}, {}, {}},
        {"only the instance is called i3lock", {shown("i3lock", "Game")}, {}, {}},
        {"xsecurelock under a compositor, a pixel free at each edge",
         {shown("obscurer", "xsecurelock", inset)},
         {},
         KnownLocker::xsecurelock},
        {"xsecurelock without", {shown("background", "xsecurelock")}, {}, KnownLocker::xsecurelock},
        {"xscreensaver locked", {saver}, "LOCK", KnownLocker::xscreensaver},
        {"xscreensaver on one of two monitors",
         {shown("xscreensaver", "XScreenSaver", half)},
         "LOCK",
         KnownLocker::xscreensaver},
        {"xscreensaver only blanks", {saver}, "BLANK", {}},
        {"xscreensaver was killed", {menu}, "LOCK", {}},
        {"xscreensaver hidden", {hiddenSaver}, "LOCK", {}},
        {"slock", {ofProcess("slock", whole)}, {}, KnownLocker::slock},
        {"a small window of slock's", {ofProcess("slock", half)}, {}, {}},
        {"xtrlock, behind which everything is seen",
         {menu, ofProcess("xtrlock", dot)},
         {},
         KnownLocker::xtrlock},
        {"a window without a name", {ofProcess("game", whole)}, {}, {}},
    };
    for (const auto& [what, windows, screenSaverState, locker] : cases) {
        const auto holder = lockHolder({{.width = 1024, .height = 640}, windows, screenSaverState});
        EXPECT_EQ(holder ? std::optional(holder->locker) : std::nullopt, locker) << what;
    }
}

}  // namespace
}  // namespace marrowby
