// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace marrowby {

/// How a panel above the lock screen is made, in AppKit's numbers.
struct PanelConfiguration {
    /// NSWindowStyleMaskNonactivatingPanel.
    std::uint64_t styleMask = 128;
    /// NSBackingStoreBuffered.
    std::uint64_t backing = 2;
    bool isDeferred = false;
    bool isOpaque = false;
    bool hasClearBackground = true;
    bool hasShadow = false;
    bool isMovable = false;
    bool isReleasedWhenClosed = false;
    bool hidesOnDeactivate = false;
    /// Just above the shield: the system's shielding level and one.
    std::int64_t level = 0;
    /// Can join all spaces, stationary, ignores cycling, full-screen auxiliary.
    std::uint64_t collectionBehavior = 337;
    /// NSWindowAnimationBehaviorNone.
    std::int64_t animationBehavior = 2;
    bool ignoresMouseEvents = true;
    bool acceptsMouseMovedEvents = true;
    bool canBecomeVisibleWithoutLogin = true;
};

}  // namespace marrowby
