#pragma once

#include "UnlockCore/Platform/SystemClock.h"

namespace marrowby {

/// Foundation's clock, whose reference date is Date's own epoch.
class FoundationSystemClock final : public SystemClock {
  public:
    [[nodiscard]] Date now() const override;
};

}  // namespace marrowby
