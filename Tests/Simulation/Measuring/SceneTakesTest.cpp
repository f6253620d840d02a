// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/SceneTakes.h"

#include <set>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(SceneTakes, labelsEveryTakeAndFilmsIt) {
    const auto takes = takesOf({.scenes = {"live-still", "phone-dark", "empty", "walks"},
                                .count = 2,
                                .first = 4,
                                .lasts = TimeInterval(0.5),
                                .width = 160,
                                .height = 120});
    ASSERT_EQ(takes.size(), 6U);
    std::set<std::string> names;
    std::set<std::string> people;
    for (const Take& take : takes) {
        EXPECT_EQ(take.label.purpose == Take::Purpose::genuine,
                  take.label.name.starts_with("live-still"));
        EXPECT_EQ(take.label.attack, take.label.name.starts_with("live") ? "" : "phone");
        EXPECT_EQ(take.pictureCount, 15U);
        names.insert(take.label.name);
        people.insert(take.label.person);
    }
    EXPECT_TRUE(names.contains("live-still 4") && names.contains("phone-dark-replay 5"));
    EXPECT_EQ(names.size(), takes.size());
    EXPECT_EQ(people.size(), takes.size());
    const auto picture = takes[0].picture(0);
    ASSERT_TRUE(picture);
    EXPECT_EQ((*picture)->extent(), (Size{160, 120}));
    EXPECT_TRUE(takesOf({.scenes = {"nothing"}}).empty());
}

}  // namespace
}  // namespace marrowby
