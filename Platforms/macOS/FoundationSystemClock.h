// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/SystemClock.h"

namespace marrowby {

/// Foundation's clock; its reference date is Date's epoch.
class FoundationSystemClock final : public SystemClock {
  public:
    [[nodiscard]] Date now() const override;
};

}  // namespace marrowby
