// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

namespace marrowby {

/// The computer's wall clock. Any thread. It may jump in both directions.
class SystemClock {
  public:
    virtual ~SystemClock() = default;
    [[nodiscard]] virtual Date now() const = 0;
};

}  // namespace marrowby
