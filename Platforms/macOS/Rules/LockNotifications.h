// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace marrowby::locknotification {

// Distributed centre.
inline constexpr const char* screenIsLocked = "com.apple.screenIsLocked";
inline constexpr const char* screenIsUnlocked = "com.apple.screenIsUnlocked";
inline constexpr const char* screenSaverDidStop = "com.apple.screensaver.didstop";

// Workspace centre.
inline constexpr const char* willSleep = "NSWorkspaceWillSleepNotification";
inline constexpr const char* screensDidSleep = "NSWorkspaceScreensDidSleepNotification";
inline constexpr const char* didWake = "NSWorkspaceDidWakeNotification";
inline constexpr const char* screensDidWake = "NSWorkspaceScreensDidWakeNotification";

}  // namespace marrowby::locknotification
