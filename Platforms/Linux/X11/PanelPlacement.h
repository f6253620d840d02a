// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/LockerWindows.h"

namespace marrowby {

/// The window arrangement that puts a panel above the locker, as tried with each of them.
enum class PanelPlacement {
    /// A child of the root window, blended by the compositor.
    blendedOnRoot,
    /// A child of the root window with a bounding shape.
    shapedOnRoot,
    /// A child of the composite overlay window, both with the same bounding shape.
    shapedInOverlay,
    nowhere,
};

/// i3lock raises itself above everything but the composite overlay window. Unknown lockers may use
/// that window, and xsecurelock does: shaping it would break its screen. Under a compositor a panel
/// over xsecurelock leaves its screen white wherever the panel was or changed its shape, so none is
/// shown there.
[[nodiscard]] PanelPlacement panelPlacement(const LockerWindows& lockers, bool hasCompositor);

}  // namespace marrowby
