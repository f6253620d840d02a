#include "Measuring/LookMeter.h"
#include "Measuring/SceneLooks.h"

#include <filesystem>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(PaceTest, opensForPeopleAndNotForPicturesAtTheCamerasEveryPace) {
    auto meter = LookMeter::create({.models = std::filesystem::path(MARROWBY_SOURCE_DIR) / "Models",
                                    .enabledCues = std::nullopt});
    ASSERT_TRUE(meter) << meter.error();
    for (const double framesPerSecond : {5.0, 7.5, 10.0, 15.0, 30.0}) {
        SCOPED_TRACE(framesPerSecond);
        const auto looks = looksOf({.scenes = {"live-normal", "phone-photo", "print-flat"},
                                    .lasts = TimeInterval(2),
                                    .framesPerSecond = framesPerSecond,
                                    .width = 640,
                                    .height = 480});
        int people = 0;
        for (const Look& look : looks) {
            const auto result = (*meter)->measure(look);
            ASSERT_TRUE(result) << result.error();
            EXPECT_EQ(result->isOpened, look.purpose == Look::Purpose::genuine) << look.name;
            if (look.purpose == Look::Purpose::genuine) ++people;
        }
        EXPECT_GT(people, 0);
        EXPECT_GT(std::ssize(looks), people);
    }
}

}  // namespace
}  // namespace marrowby
