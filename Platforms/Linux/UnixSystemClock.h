#pragma once

#include "UnlockCore/Platform/SystemClock.h"

namespace marrowby {

/// The wall clock as the C library tells it.
class UnixSystemClock final : public SystemClock {
  public:
    [[nodiscard]] Date now() const override;
};

}  // namespace marrowby
