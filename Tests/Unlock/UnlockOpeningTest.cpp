// SPDX-License-Identifier: Apache-2.0
#include "Unlock/UnlockOpening.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Window = UnlockOpening::Window;

TEST(UnlockOpening, bringsAnOpenWindowForwardAndOpensTheOneThatIsNeeded) {
    const struct {
        UnlockOpening::State state;
        Window onReopen;
        Window onLaunch;
    } cases[] = {
        {{}, Window::welcome, Window::welcome},
        {{.finishedWelcome = true}, Window::welcome, Window::welcome},
        {{.isReady = true}, Window::settings, Window::settings},
        {{.isReady = true, .welcomeOpen = true}, Window::welcome, Window::settings},
        {{.isReady = false, .settingsOpen = true}, Window::settings, Window::welcome},
        {{.isReady = true, .welcomeOpen = true, .settingsOpen = true},
         Window::welcome,
         Window::settings},
    };
    for (const auto& [state, reopened, launched] : cases) {
        EXPECT_EQ(UnlockOpening::onReopen(state), reopened);
        EXPECT_EQ(UnlockOpening::onLaunch(state, {.isAtLogin = false, .isVisible = true}),
                  launched);
        for (const UnlockOpening::Launch& quiet :
             {UnlockOpening::Launch{.isAtLogin = true, .isVisible = true},
              UnlockOpening::Launch{.isAtLogin = false, .isVisible = false}})
            EXPECT_EQ(UnlockOpening::onLaunch(state, quiet), std::nullopt);
    }
}

}  // namespace
}  // namespace marrowby
