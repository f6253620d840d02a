#pragma once

#include "UnlockCore/Foundation/Geometry.h"

namespace marrowby {

/// Whether a window hides a monitor, or the whole screen, as lockers' do: some leave a pixel free
/// at each edge. Frames are with their borders, in pixels of the root window.
[[nodiscard]] inline bool covers(const Rect& window, const Rect& monitor) {
    constexpr double margin = 1;
    return window.x <= monitor.x + margin && window.y <= monitor.y + margin &&
           window.maxX() >= monitor.maxX() - margin && window.maxY() >= monitor.maxY() - margin;
}

}  // namespace marrowby
