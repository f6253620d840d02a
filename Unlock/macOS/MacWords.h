// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/PlatformWords.h"

namespace marrowby {

inline constexpr PlatformWords macWords{
    .computer = Phrase("Mac"),
    .system = Phrase("macOS"),
    .password = {.inSentence = Phrase("Mac password"),
                 .atStart = Phrase("Mac password"),
                 .onButton = Phrase("Mac Password")},
    .ownerCheck = {.name = Phrase("Touch ID"),
                   .orPassword = Phrase("Touch ID (or your password)"),
                   .yours = Phrase("Touch ID or password"),
                   .prompt = Phrase("Touch ID"),
                   .button = Phrase("Use Touch ID…"),
                   .finger = Phrase("Touch ID"),
                   .remedy = Phrase("Set a password for your account in System Settings.")},
    .keyStore = {.inSentence = Phrase("keychain"),
                 .atStart = Phrase("Keychain"),
                 .remedy = Phrase("Unlock your login keychain in Keychain Access.")},
    .typing = {.right = Phrase("Accessibility"),
               .rightAtStart = Phrase("Accessibility"),
               .allowed = Phrase("Accessibility allowed"),
               .notAllowed = Phrase("Accessibility is off"),
               .purpose = Phrase(
                   "Accessibility lets it type into the lock screen. It types nothing else.")},
    .pointer = Phrase("the trackpad"),
    .island = Phrase("in the notch"),
    .applications = Phrase("Applications"),
    .missingModel = {.place = Phrase("in the app"), .remedy = Phrase("Reinstall Marrowby Unlock.")},
    .camera = {.place = Phrase("System Settings › Privacy & Security › Camera"), .remedy = {}},
    .accessibility = {.place = Phrase("System Settings › Privacy & Security › Accessibility"),
                      .remedy = {}},
    .inputMonitoring = {.place = Phrase("System Settings › Privacy & Security › Input Monitoring"),
                        .remedy = {}},
};

}  // namespace marrowby
