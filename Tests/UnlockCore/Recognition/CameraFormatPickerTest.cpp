// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/CameraFormatPicker.h"

#include <cstddef>
#include <limits>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using cameraformatpicker::Candidate;

TEST(CameraFormatPicker, PrefersFastThenFittingThenLarge) {
    constexpr auto huge = std::numeric_limits<std::int64_t>::max();
    struct Case {
        const char* what;
        std::vector<Candidate> candidates;
        std::optional<std::size_t> picked;
    };
    const std::vector<Case> cases{
        {"none", {}, std::nullopt},
        {"all slow and too high", {{1920, 1080, 29.98}, {3840, 2160, 15}}, 0},
        {"height cap", {{1920, 1080, 30}, {1280, 720, 30}}, 1},
        {"rate before size", {{1280, 720, 15}, {640, 480, 30}}, 1},
        {"smallest fast one", {{3840, 2160, 30}, {1920, 1080, 30}, {640, 480, 15}}, 1},
        {"slow ones by size", {{320, 240, 15}, {640, 480, 10}, {1920, 1080, 20}}, 1},
        {"equal area, fast", {{640, 480, 30}, {480, 640, 60}}, 0},
        {"almost 30", {{320, 240, 30}, {640, 480, 29.995}}, 1},
        {"no rate at all", {{1280, 720, 0}}, 0},
        {"product overflows", {{640, 480, 30}, {huge, 700, 30}}, 1},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(cameraformatpicker::pick(c.candidates, 720, 30), c.picked) << c.what;
    }
}

}  // namespace
}  // namespace marrowby
