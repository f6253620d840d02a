#pragma once

#include <cstdint>

namespace marrowby {

/// What operator new gave out in the whole program so far; what OpenCV takes for its own pictures
/// does not come from there.
struct Allocations {
    std::int64_t count = 0;
    std::int64_t bytes = 0;
    [[nodiscard]] static Allocations now();
};

}  // namespace marrowby
