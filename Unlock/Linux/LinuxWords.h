// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/PlatformWords.h"

namespace marrowby {

/// For a Linux desktop, where permissions are group memberships and polkit asks for the password.
inline constexpr PlatformWords linuxWords{
    .computer = Phrase("computer"),
    .system = Phrase("The system"),
    .password = {.inSentence = Phrase("login password"),
                 .atStart = Phrase("Login password"),
                 .onButton = Phrase("Login Password")},
    .ownerCheck = {.name = Phrase("your password"),
                   .orPassword = Phrase("your password"),
                   .yours = Phrase("password"),
                   .prompt = Phrase("The confirmation"),
                   .button = Phrase("Confirm Password…"),
                   .finger = Phrase("a fingerprint reader"),
                   .remedy = Phrase(
                       "Install polkit, and start an authentication agent in your session.")},
    .keyStore = {.inSentence = Phrase("keyring"),
                 .atStart = Phrase("Keyring"),
                 .remedy =
                     Phrase("Start a keyring (gnome-keyring, for example) in your session, and "
                            "unlock it.")},
    .typing = {.right = Phrase("permission"),
               .rightAtStart = Phrase("Permission to type"),
               .allowed = Phrase("Typing allowed"),
               .notAllowed = Phrase("Typing isn’t allowed"),
               .purpose = Phrase("It types into the lock screen, and nowhere else.")},
    .pointer = Phrase("the mouse"),
    .island = Phrase("at the top of the screen"),
    .applications = Phrase("the applications menu"),
    .missingModel = {.place = Phrase("in the models’ folder"),
                     .remedy = Phrase("Prepare the models again, then restart Marrowby Unlock.")},
    .camera = {.place = {},
               .remedy = Phrase("Add your account to the group “video”, "
                                "then log in again.")},
    .accessibility = {.place = {}, .remedy = Phrase("Log in to an X11, GNOME or KDE session.")},
    .inputMonitoring = {.place = {}, .remedy = Phrase("Space is heard in X11 sessions.")},
};

}  // namespace marrowby
