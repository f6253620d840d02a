// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace marrowby {

/// Bytes that operator new has returned in the whole program so far; OpenCV's pictures are not
/// among them.
struct Allocations {
    std::int64_t count = 0;
    std::int64_t bytes = 0;
    [[nodiscard]] static Allocations now();
};

}  // namespace marrowby
