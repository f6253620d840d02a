// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/ScanConfiguration.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/LockWatching/UnlockTrigger.h"

namespace marrowby {

/// What the application tells the engine about itself.
struct UnlockReadiness {
    bool isEnabled = false;
    UnlockTriggers triggers;
    bool showsUI = false;
    TimeInterval scanDuration{};
    bool vaultUnlocked = false;
    bool passwordSaved = false;
    bool accessibilityTrusted = false;
    bool spaceKeyAccess = false;
    /// For the next scan.
    ScanConfiguration scan;
};

}  // namespace marrowby
