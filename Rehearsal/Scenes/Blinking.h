#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <cstdint>

namespace marrowby {

/// How far the eyes of somebody who blinks now and then are shut: 0 open … 1 shut. Once in about
/// four seconds, for a third of one.
[[nodiscard]] float blinkAt(TimeInterval time, std::uint64_t seed);

}  // namespace marrowby
