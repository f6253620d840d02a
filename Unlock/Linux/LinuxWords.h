// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/PlatformWords.h"

namespace marrowby {

/// For a Linux desktop, where permissions are group memberships and polkit asks for the password.
inline constexpr PlatformWords linuxWords{
    .computer = "computer",
    .system = "The system",
    .password = {.inSentence = "login password",
                 .atStart = "Login password",
                 .onButton = "Login Password"},
    .ownerCheck = {.name = "your password",
                   .orPassword = "your password",
                   .yours = "password",
                   .prompt = "The confirmation",
                   .button = "Confirm Password…",
                   .finger = "a fingerprint reader",
                   .remedy = "Install polkit, and start an authentication agent in your session."},
    .keyStore = {.inSentence = "keyring",
                 .atStart = "Keyring",
                 .remedy = "Start a keyring (gnome-keyring, for example) in your session, and "
                           "unlock it."},
    .typing = {.right = "permission",
               .rightAtStart = "Permission to type",
               .allowed = "Typing allowed",
               .notAllowed = "Typing isn’t allowed",
               .purpose = "It types into the lock screen, and nowhere else."},
    .pointer = "the mouse",
    .island = "at the top of the screen",
    .applications = "the applications menu",
    .missingModel = {.place = "in the models’ folder",
                     .remedy = "Prepare the models again, then restart Marrowby Unlock."},
    .camera = {.place = {},
               .remedy = "Add your account to the group “video”, "
                         "then log in again."},
    .accessibility = {.place = {}, .remedy = "Log in to an X11, GNOME or KDE session."},
    .inputMonitoring = {.place = {}, .remedy = "Space is heard in X11 sessions."},
};

}  // namespace marrowby
