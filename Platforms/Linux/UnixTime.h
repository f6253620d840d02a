#pragma once

#include "UnlockCore/Foundation/Time.h"

namespace marrowby::unixtime {

/// From 1970-01-01, where Unix time starts, to 2001-01-01, where Date does.
inline constexpr TimeInterval toDateEpoch{978'307'200};

}  // namespace marrowby::unixtime
