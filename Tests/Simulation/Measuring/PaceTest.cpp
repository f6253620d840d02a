#include "Simulation/Measuring/LookMeter.h"
#include "Simulation/Measuring/SceneLooks.h"

#include <filesystem>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(PaceTest, opensForPeopleAndNotForPicturesAtEveryFrameRate) {
    auto meter = LookMeter::create(std::filesystem::path(MARROWBY_SOURCE_DIR) / "Models", 0.5F);
    ASSERT_TRUE(meter) << meter.error();
    LookMeter* const meters[] = {meter->get()};
    const Trial whole = trials(LivenessMode::standard, std::nullopt).front();
    for (const double framesPerSecond : {5.0, 7.5, 10.0, 15.0, 30.0}) {
        SCOPED_TRACE(framesPerSecond);
        const auto looks = looksOf({.scenes = {"live-normal", "phone-photo", "print-flat"},
                                    .lasts = TimeInterval(2),
                                    .framesPerSecond = framesPerSecond,
                                    .width = 640,
                                    .height = 480});
        int people = 0;
        for (const Look& look : looks) {
            const auto evidence = record(look, meters, std::span(&whole, 1), TimeInterval(0));
            ASSERT_TRUE(evidence) << evidence.error();
            const LookResult result = judged(evidence->front(), whole, (*meter)->people());
            const bool isGenuine = look.label.purpose == Look::Purpose::genuine;
            EXPECT_EQ(result.isOpened, isGenuine) << look.label.name;
            if (isGenuine) ++people;
        }
        EXPECT_GT(people, 0);
        EXPECT_GT(std::ssize(looks), people);
    }
}

}  // namespace
}  // namespace marrowby
