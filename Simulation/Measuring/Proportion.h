// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace marrowby {

/// How often something happened, of how many times it could have.
struct Proportion {
    std::int64_t count = 0;
    std::int64_t total = 0;

    struct Interval {
        double low = 0;
        double high = 1;
    };

    /// 0 of none.
    [[nodiscard]] double rate() const;
    /// The exact 95 % interval (Clopper and Pearson, Biometrika 26, 1934): never too narrow, also
    /// for 0 of few. 0…1 of none.
    [[nodiscard]] Interval interval() const;

    void add(bool happened) {
        ++total;
        if (happened) ++count;
    }
};

}  // namespace marrowby
