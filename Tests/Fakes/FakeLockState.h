#pragma once

#include "UnlockCore/LockWatching/LockStateReading.h"

#include <atomic>

namespace marrowby {

/// A screen that the test locks and unlocks.
class FakeLockState final : public LockStateReading {
  public:
    std::atomic<bool> locked = false;

    [[nodiscard]] bool isLocked() const override { return locked; }
};

}  // namespace marrowby
