#include "Rehearsal/Scenes/SceneUser.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

/// Enrols a user whose head is seen by a finder that scales its angles. Seconds until it is done.
double enrol(SceneUser& user, float yawScale, float pitchScale) {
    EnrollmentSession session{Date()};
    for (int frame = 0; frame < 60 * 15; ++frame) {
        const TimeInterval time(frame / 15.0);
        const Stance stance = user.at(time);
        session.observe(EnrollmentFrame::Face{.yaw = stance.head.yaw * yawScale,
                                              .pitch = stance.head.pitch * pitchScale,
                                              .quality = 0.9F,
                                              .fivePointAligned = true,
                                              .embedding = {1, 0}},
                        Date(time));
        user.heed(session.hint(), time);
        if (session.isDone()) return time.count();
    }
    return 0;
}

TEST(SceneUser, takesAllPosesAlsoBeforeAFinderThatSeesTurnsTooSmallOrTooLarge) {
    for (const auto& [yawScale, pitchScale] :
         {std::pair(1.0F, 1.0F), std::pair(0.7F, 0.65F), std::pair(1.35F, 1.3F)}) {
        SceneUser user(5);
        const double took = enrol(user, yawScale, pitchScale);
        EXPECT_GT(took, 10) << "nine poses, each held";
        EXPECT_LT(took, 55);
    }
}

TEST(SceneUser, movesSmoothlyAndTheSameForTheSameSeed) {
    SceneUser user(5);
    SceneUser twin(5);
    Stance last = user.at(TimeInterval(0));
    float blinked = 0;
    for (int frame = 1; frame < 12 * 30; ++frame) {
        const TimeInterval time(frame / 30.0);
        if (frame == 60) {
            user.turnHead(time);
            twin.turnHead(time);
        }
        const Stance stance = user.at(time);
        EXPECT_EQ(stance.head.yaw, twin.at(time).head.yaw);
        EXPECT_NEAR(stance.head.yaw, last.head.yaw, 0.06) << "at " << time.count();
        blinked = std::max(blinked, stance.expression.blink);
        last = stance;
    }
    EXPECT_GT(blinked, 0.6F);
}

TEST(SceneUser, leavesThePictureAndComesBack) {
    SceneUser user(5);
    user.walkAway(TimeInterval(1));
    EXPECT_TRUE(user.at(TimeInterval(1)).isThere);
    EXPECT_FALSE(user.at(TimeInterval(3)).isThere);
    user.comeBack(TimeInterval(4));
    EXPECT_TRUE(user.at(TimeInterval(6)).isThere);
    EXPECT_NEAR(user.at(TimeInterval(6)).head.yaw, 0, 0.1);
}

}  // namespace
}  // namespace marrowby
