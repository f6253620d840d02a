// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/PlatformWords.h"

namespace marrowby {

inline constexpr PlatformWords macWords{
    .computer = "Mac",
    .system = "macOS",
    .password = {.inSentence = "Mac password",
                 .atStart = "Mac password",
                 .onButton = "Mac Password"},
    .ownerCheck = {.name = "Touch ID",
                   .orPassword = "Touch ID (or your password)",
                   .yours = "Touch ID or password",
                   .prompt = "Touch ID",
                   .button = "Use Touch ID…",
                   .finger = "Touch ID",
                   .remedy = "Set a password for your account in System Settings."},
    .keyStore = {.inSentence = "keychain",
                 .atStart = "Keychain",
                 .remedy = "Unlock your login keychain in Keychain Access."},
    .typing = {.right = "Accessibility",
               .rightAtStart = "Accessibility",
               .allowed = "Accessibility allowed",
               .notAllowed = "Accessibility is off",
               .purpose =
                   "Accessibility lets it type into the lock screen. It types nothing else."},
    .pointer = "the trackpad",
    .island = "in the notch",
    .applications = "Applications",
    .missingModel = {.place = "in the app", .remedy = "Reinstall Marrowby Unlock."},
    .camera = {.place = "System Settings › Privacy & Security › Camera", .remedy = {}},
    .accessibility = {.place = "System Settings › Privacy & Security › Accessibility",
                      .remedy = {}},
    .inputMonitoring = {.place = "System Settings › Privacy & Security › Input Monitoring",
                        .remedy = {}},
};

}  // namespace marrowby
