// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace marrowby {

/// Ends the process after writing the reason: for programming faults that must not go on.
[[noreturn]] void fatal(const char* reason);

/// value + 1; an overflow is fatal.
template <typename Integer>
[[nodiscard]] Integer incremented(Integer value) {
    Integer result{};
    if (__builtin_add_overflow(value, Integer{1}, &result)) fatal("a counter overflowed");
    return result;
}

}  // namespace marrowby
