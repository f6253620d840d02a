#include "Simulation/Measuring/SceneLooks.h"

#include <set>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(SceneLooks, labelsEveryTakeAndFilmsIt) {
    const auto looks = looksOf({.scenes = {"live-still", "phone-dark", "empty", "walks"},
                                .count = 2,
                                .first = 4,
                                .lasts = TimeInterval(0.5),
                                .width = 160,
                                .height = 120});
    ASSERT_EQ(looks.size(), 6U);
    std::set<std::string> names;
    std::set<std::string> people;
    for (const Look& look : looks) {
        EXPECT_EQ(look.label.purpose == Look::Purpose::genuine,
                  look.label.name.starts_with("live-still"));
        EXPECT_EQ(look.label.attack, look.label.name.starts_with("live") ? "" : "phone");
        EXPECT_EQ(look.pictureCount, 15U);
        names.insert(look.label.name);
        people.insert(look.label.person);
    }
    EXPECT_TRUE(names.contains("live-still 4") && names.contains("phone-dark-replay 5"));
    EXPECT_EQ(names.size(), looks.size());
    EXPECT_EQ(people.size(), looks.size());
    const auto picture = looks[0].picture(0);
    ASSERT_TRUE(picture);
    EXPECT_EQ((*picture)->extent(), (Size{160, 120}));
    EXPECT_TRUE(looksOf({.scenes = {"nothing"}}).empty());
}

}  // namespace
}  // namespace marrowby
