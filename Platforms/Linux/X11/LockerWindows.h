// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Geometry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// Whether a window covers a monitor, or the whole screen; some lockers leave one pixel at each
/// edge. Frames include borders, in pixels of the root window.
[[nodiscard]] inline bool covers(const Rect& window, const Rect& monitor) {
    constexpr double margin = 1;
    return window.x <= monitor.x + margin && window.y <= monitor.y + margin &&
           window.maxX() >= monitor.maxX() - margin && window.maxY() >= monitor.maxY() - margin;
}

/// The windows and the property by which screen lockers are recognised.
struct LockerWindows {
    /// A child of the root window.
    struct Window {
        /// WM_CLASS.
        std::string instanceName;
        std::string className;
        bool overrideRedirect = false;
        bool mapped = false;
        /// Including its border, in pixels of the root window.
        Rect frame;
        std::uint32_t id = 0;
        /// Name of the process, only for a window without WM_CLASS. Any program may use any name.
        std::string program{};
    };

    /// Size of the root window, pixels.
    Size screen;
    std::vector<Window> windows;
    /// Name of the state in the root's property _SCREENSAVER_STATUS, if set.
    std::optional<std::string> screenSaverState;
    /// xscreensaver has run on this display.
    bool hasScreenSaver = false;
};

enum class KnownLocker { i3lock, xsecurelock, xscreensaver, slock, xtrlock };

/// The locker that covers the screen, and its window; 0 for xscreensaver, which has several.
struct LockHolder {
    KnownLocker locker{};
    std::uint32_t window = 0;
    friend bool operator==(const LockHolder&, const LockHolder&) = default;
};

/// Name of a locker that no password is typed into; empty for the others. The kernel hides which
/// executables slock and xtrlock run, because they have rights of their own, so nothing proves that
/// they are the lockers.
[[nodiscard]] std::string_view untypedName(KnownLocker locker);

/// `nullopt` when no known locker covers the screen.
[[nodiscard]] std::optional<LockHolder> lockHolder(const LockerWindows& lockers);

}  // namespace marrowby
