#pragma once

#include "UnlockCore/Foundation/Geometry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// Whether a window hides a monitor, or the whole screen, as lockers' do: some leave a pixel free
/// at each edge. Frames are with their borders, in pixels of the root window.
[[nodiscard]] inline bool covers(const Rect& window, const Rect& monitor) {
    constexpr double margin = 1;
    return window.x <= monitor.x + margin && window.y <= monitor.y + margin &&
           window.maxX() >= monitor.maxX() - margin && window.maxY() >= monitor.maxY() - margin;
}

/// The windows and the property by which screen lockers show themselves on an X display.
struct LockerWindows {
    /// A child of the root window.
    struct Window {
        /// The two halves of WM_CLASS.
        std::string instanceName;
        std::string className;
        bool overrideRedirect = false;
        bool mapped = false;
        /// With its border, in pixels of the root window.
        Rect frame;
        std::uint32_t id = 0;
    };

    /// Of the root window, in pixels.
    Size screen;
    std::vector<Window> windows;
    /// The name of the state in the root's property _SCREENSAVER_STATUS; nothing without one.
    std::optional<std::string> screenSaverState;
};

enum class KnownLocker { i3lock, xsecurelock, xscreensaver };

/// The locker that holds the screen, and the window that it holds it with, as far as that stays.
struct LockHolder {
    KnownLocker locker{};
    std::uint32_t window = 0;
    friend bool operator==(const LockHolder&, const LockHolder&) = default;
};

/// Nothing where none does.
[[nodiscard]] std::optional<LockHolder> lockHolder(const LockerWindows& lockers);

}  // namespace marrowby
