// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/PanelPlacement.h"

#include <algorithm>

namespace marrowby {

PanelPlacement panelPlacement(const LockerWindows& lockers, bool hasCompositor) {
    // Even while its window covers only part of the screen.
    const bool hasXsecurelock = std::ranges::any_of(
        lockers.windows,
        [](const LockerWindows::Window& window) { return window.className == "xsecurelock"; });
    if (hasXsecurelock) return PanelPlacement::nowhere;
    if (hasCompositor) return PanelPlacement::blendedOnRoot;
    const auto holder = lockHolder(lockers);
    return holder && holder->locker == KnownLocker::i3lock ? PanelPlacement::shapedInOverlay
                                                           : PanelPlacement::shapedOnRoot;
}

}  // namespace marrowby
