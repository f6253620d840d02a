// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/LoginWindowKeyboard.h"

#include <string_view>

namespace marrowby {

namespace {

constexpr std::string_view loginWindow = "com.apple.loginwindow";

}  // namespace

bool isLoginWindowsKeyboard(const KeyboardFacts& facts) {
    return facts.isInputSecure &&
           (!facts.frontApplication || *facts.frontApplication == loginWindow);
}

}  // namespace marrowby
