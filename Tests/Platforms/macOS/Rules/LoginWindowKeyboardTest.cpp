// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/LoginWindowKeyboard.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(LoginWindowKeyboard, isTheLoginWindowsOnlyWithSecureInputAndNoOtherApplicationInFront) {
    const struct {
        KeyboardFacts facts;
        bool isLoginWindows;
    } cases[] = {
        {{true, "com.apple.loginwindow"}, true},       {{true, std::nullopt}, true},
        {{false, "com.apple.loginwindow"}, false},     {{false, std::nullopt}, false},
        {{true, "com.apple.Terminal"}, false},         {{true, ""}, false},
        {{true, "com.apple.loginwindow.fake"}, false}, {{true, "app.quenby.unlock"}, false},
    };
    for (const auto& [facts, isLoginWindows] : cases)
        EXPECT_EQ(isLoginWindowsKeyboard(facts), isLoginWindows)
            << facts.isInputSecure << " " << facts.frontApplication.value_or("nobody");
}

}  // namespace
}  // namespace marrowby
