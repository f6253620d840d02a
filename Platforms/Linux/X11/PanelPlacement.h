#pragma once

#include "Platforms/Linux/X11/LockerWindows.h"

namespace marrowby {

/// Where on an X display a panel has to be to lie above the locker, as tried with each of them.
enum class PanelPlacement {
    /// A child of the root window whose pixels the compositor blends with what is below.
    blendedOnRoot,
    /// A child of the root window, cut out along its shape.
    shapedOnRoot,
    /// A child of the composite overlay window, which is cut out along the same shape.
    shapedInOverlay,
    nowhere,
};

/// The composite overlay window lies above i3lock, which else raises itself over everything.
/// Unknown lockers may use it, and xsecurelock does: clipping it would break its screen. Nor is a
/// panel shown above xsecurelock under a compositor, which would paint over its screen in white
/// wherever the panel was or changed its shape.
[[nodiscard]] PanelPlacement panelPlacement(const LockerWindows& lockers, bool hasCompositor);

}  // namespace marrowby
