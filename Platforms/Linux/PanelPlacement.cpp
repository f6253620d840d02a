#include "Platforms/Linux/PanelPlacement.h"

#include <algorithm>

namespace marrowby {

PanelPlacement panelPlacement(const LockerTraces& traces, bool hasCompositor) {
    // However little of the screen it covers yet.
    const bool hasXsecurelock = std::ranges::any_of(
        traces.windows,
        [](const LockerTraces::Window& window) { return window.className == "xsecurelock"; });
    if (hasXsecurelock) return PanelPlacement::nowhere;
    if (hasCompositor) return PanelPlacement::blendedOnRoot;
    const auto holder = lockHolder(traces);
    return holder && holder->locker == KnownLocker::i3lock ? PanelPlacement::shapedInOverlay
                                                           : PanelPlacement::shapedOnRoot;
}

}  // namespace marrowby
