// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/CameraChoice.h"
#include "UnlockCore/Engine/ScanConfiguration.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/LockWatching/UnlockTrigger.h"
#include "UnlockCore/Platform/SessionUnlocking.h"

namespace marrowby {

/// What the application tells the engine about itself.
struct UnlockReadiness {
    bool isEnabled = false;
    UnlockTriggers triggers;
    bool showsUI = false;
    TimeInterval scanDuration{};
    bool vaultUnlocked = false;
    LockOpening opening = LockOpening::typing;
    /// Or, where the desktop is asked, the user allowed that.
    bool passwordSaved = false;
    bool accessibilityTrusted = false;
    bool spaceKeyAccess = false;
    /// The next scan's camera follows the displays at its start.
    CameraChoice camera;
    /// For the next scan, but for its camera.
    ScanConfiguration scan;
};

}  // namespace marrowby
