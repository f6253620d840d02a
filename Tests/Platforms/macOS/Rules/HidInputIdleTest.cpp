// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/HidInputIdle.h"

#include <cmath>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

struct Counters final : IdleCounters {
    TimeInterval event{};
    std::optional<std::uint64_t> registry;

    [[nodiscard]] TimeInterval secondsSinceLastEvent() const override { return event; }
    [[nodiscard]] std::optional<std::uint64_t> registryIdleNanoseconds() const override {
        return registry;
    }
    [[nodiscard]] TimeInterval systemUptime() const override { return {}; }
};

TEST(HidInputIdle, fallsBackToTheRegistryWhenTheEventSystemMakesNoSense) {
    Counters counters;
    const HidInputIdle idle(counters);
    counters.registry = 1'500'000'000;
    for (const double sensible : {0.0, 4.25, 99'999'999.0}) {
        counters.event = TimeInterval(sensible);
        EXPECT_EQ(idle.sinceLastInput(), counters.event);
    }
    for (const double unusable : {std::nan(""), -HUGE_VAL, -0.001, 1e8, HUGE_VAL}) {
        counters.event = TimeInterval(unusable);
        EXPECT_EQ(idle.sinceLastInput(), TimeInterval(1.5)) << unusable;
    }
    counters.registry.reset();
    EXPECT_EQ(idle.sinceLastInput(), std::nullopt);
}

}  // namespace
}  // namespace marrowby
