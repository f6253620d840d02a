// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/SceneUser.h"

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

TEST(SceneUser, takesAllPosesThoughTheFinderUnderOrOverstatesTurns) {
    for (const auto& [yawScale, pitchScale] :
         {std::pair(1.0F, 1.0F), std::pair(0.7F, 0.65F), std::pair(1.35F, 1.3F)}) {
        SceneUser user(5);
        const double took = enrol(user, yawScale, pitchScale);
        EXPECT_GT(took, 10) << "nine poses, each held";
        EXPECT_LT(took, 55);
    }
}

}  // namespace
}  // namespace marrowby
