// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/PanelPlacement.h"

#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr Rect whole{.x = 0, .y = 0, .width = 1024, .height = 640};
constexpr Rect corner{.x = 0, .y = 0, .width = 10, .height = 10};

LockerWindows::Window shown(const char* name, const Rect& frame = whole) {
    return {name, name, true, true, frame};
}

TEST(PanelPlacement, usesTheOverlayWindowOnlyAboveI3lock) {
    using enum PanelPlacement;
    const struct {
        const char* what;
        std::vector<LockerWindows::Window> windows;
        PanelPlacement alone;
        PanelPlacement composited;
    } cases[] = {
        {"no locker", {}, shapedOnRoot, blendedOnRoot},
        {"an unknown locker", {shown("slock")}, shapedOnRoot, blendedOnRoot},
        {"xscreensaver", {shown("xscreensaver")}, shapedOnRoot, blendedOnRoot},
        {"i3lock", {shown("i3lock")}, shapedInOverlay, blendedOnRoot},
        {"xsecurelock", {shown("xsecurelock")}, nowhere, nowhere},
        {"xsecurelock coming up", {shown("xsecurelock", corner)}, nowhere, nowhere},
        {"both", {shown("i3lock"), shown("xsecurelock", corner)}, nowhere, nowhere},
    };
    for (const auto& [what, windows, alone, composited] : cases) {
        const LockerWindows lockers{{.width = 1024, .height = 640}, windows, "LOCK"};
        EXPECT_EQ(panelPlacement(lockers, false), alone) << what;
        EXPECT_EQ(panelPlacement(lockers, true), composited) << what;
    }
}

}  // namespace
}  // namespace marrowby
