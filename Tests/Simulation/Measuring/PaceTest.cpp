// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/SceneTakes.h"
#include "Simulation/Measuring/TakeMeter.h"

#include <filesystem>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(PaceTest, opensForPeopleAndNotForPicturesAtEveryFrameRate) {
    auto meter = TakeMeter::create(std::filesystem::path(MARROWBY_SOURCE_DIR) / "Models", 0.5F);
    ASSERT_TRUE(meter) << meter.error();
    TakeMeter* const meters[] = {meter->get()};
    const Trial whole = trials(LivenessMode::standard, std::nullopt).front();
    for (const double framesPerSecond : {5.0, 7.5, 10.0, 15.0, 30.0}) {
        SCOPED_TRACE(framesPerSecond);
        const auto takes = takesOf({.scenes = {"live-normal", "phone-photo", "print-flat"},
                                    .lasts = TimeInterval(2),
                                    .framesPerSecond = framesPerSecond,
                                    .width = 640,
                                    .height = 480});
        int people = 0;
        for (const Take& take : takes) {
            const auto evidence = record(take, meters, std::span(&whole, 1), TimeInterval(0));
            ASSERT_TRUE(evidence) << evidence.error();
            const TakeResult result = judged(evidence->front(), whole, (*meter)->people());
            const bool isGenuine = take.label.purpose == Take::Purpose::genuine;
            EXPECT_EQ(result.isOpened, isGenuine) << take.label.name;
            if (isGenuine) ++people;
        }
        EXPECT_GT(people, 0);
        EXPECT_GT(std::ssize(takes), people);
    }
}

}  // namespace
}  // namespace marrowby
