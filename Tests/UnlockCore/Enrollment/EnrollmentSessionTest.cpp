// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Enrollment/EnrollmentSession.h"

#include <limits>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Hint = EnrollmentSession::Hint;

constexpr Date start{TimeInterval(1000)};

/// Plays heads to a session, eight frames a second (exact in binary), the first at the very start.
class Driver {
  public:
    EnrollmentSession session{start};

    static EnrollmentFrame::Face face(std::optional<float> yaw, std::optional<float> pitch) {
        return {.yaw = yaw,
                .pitch = pitch,
                .quality = 0.6F,
                .fivePointAligned = true,
                .embedding = {0.6F, 0.8F}};
    }
    static EnrollmentFrame::Face straight() { return face(0.0F, 0.0F); }

    /// The number of samples taken so far.
    std::size_t play(const EnrollmentFrame& frame, int times = 1) {
        for (int i = 0; i < times; ++i) {
            session.observe(frame, now());
            ++frame_;
        }
        return session.samples().size();
    }
    void skipTo(TimeInterval sinceStart) { frame_ = static_cast<int>(sinceStart.count() * 8); }
    [[nodiscard]] Date now() const { return start + TimeInterval(frame_ / 8.0); }

  private:
    int frame_ = 0;
};

TEST(EnrollmentSession, takesTwoSamplesOfEveryPoseInOrder) {
    struct Pose {
        std::string name;
        float yaw;
        float pitch;
        double guide;
    };
    const std::vector<Pose> poses{
        {"centre", 0, 0, 0},
        {"left", 0.3F, 0, 270},
        {"top-left", 0.3F, -0.2125F, 315},
        {"top", 0, -0.2125F, 0},
        {"top-right", -0.3F, -0.2125F, 45},
        {"right", -0.3F, 0, 90},
        {"bottom-right", -0.3F, 0.2125F, 135},
        {"bottom", 0, 0.2125F, 180},
        {"bottom-left", 0.3F, 0.2125F, 225},
    };
    Driver driver;
    driver.skipTo(TimeInterval(2));
    std::size_t taken = 0;
    for (const Pose& pose : poses) {
        EXPECT_DOUBLE_EQ(driver.session.progress(), static_cast<double>(taken) / 18);
        const auto face = Driver::face(pose.yaw, pose.pitch);
        // Half a second of holding, then every third frame.
        EXPECT_EQ(driver.play(face, 6), taken) << pose.name;
        EXPECT_NEAR(driver.session.headTurn().value(), pose.guide, 0.01) << pose.name;
        EXPECT_EQ(driver.play(face), taken + 1) << pose.name;
        EXPECT_EQ(driver.play(face, 2), taken + 1) << pose.name;
        EXPECT_FALSE(driver.session.isDone());
        const Date last = driver.now();
        taken = driver.play(face);
        ASSERT_EQ(taken, driver.session.samples().size());
        EXPECT_EQ(driver.session.samples().back(), (FaceSample{.embedding = face.embedding,
                                                               .pose = pose.name,
                                                               .capturedAt = last,
                                                               .quality = face.quality}));
    }
    EXPECT_EQ(taken, 18U);
    EXPECT_TRUE(driver.session.isDone());
    EXPECT_EQ(driver.session.headTurn(), std::nullopt);
    EXPECT_EQ(driver.session.progress(), 1);
    EXPECT_EQ(driver.session.capturedPoses().size(), 8U);
    driver.play(EnrollmentFrame::NoFace{});
    EXPECT_EQ(driver.session.hint(), Hint(Hint::Done{}));
    EXPECT_EQ(driver.play(Driver::straight(), 20), 18U);
}

TEST(EnrollmentSession, anyFailingFrameStartsHoldAndStreakAgain) {
    struct Case {
        const char* name;
        EnrollmentFrame frame;
        Hint hint;
        bool hasGuide;
    };
    const Hint wanted = Hint::Pose{EnrollmentPose::center};
    const float none = std::numeric_limits<float>::quiet_NaN();
    auto poor = Driver::straight();
    poor.quality = 0.19F;
    auto twoPoint = Driver::straight();
    twoPoint.fivePointAligned = false;
    auto unusable = Driver::straight();
    unusable.embedding = {0, 0};
    const std::vector<Case> cases{
        {"no face", EnrollmentFrame::NoFace{}, Hint::NoFace{}, false},
        {"too far away", EnrollmentFrame::TooFar{}, Hint::Closer{}, false},
        {"no pitch", Driver::face(0, std::nullopt), wanted, false},
        {"not a number", Driver::face(none, 0), wanted, false},
        {"turned too far", Driver::face(0.6F, 0.1F), Hint::TooFar{Phrase("Not so far to the left")},
         false},
        {"another pose", Driver::face(0.3F, 0), wanted, true},
        {"poor quality", poor, wanted, true},
        {"two points", twoPoint, wanted, true},
        {"unusable embedding", unusable, wanted, true},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        Driver driver;
        driver.skipTo(TimeInterval(2));
        EXPECT_EQ(driver.play(Driver::straight(), 6), 0U);
        EXPECT_EQ(driver.play(each.frame), 0U);
        EXPECT_EQ(driver.session.hint(), each.hint);
        EXPECT_EQ(driver.session.headTurn().has_value(), each.hasGuide);
        EXPECT_EQ(driver.play(Driver::straight(), 6), 0U);
        EXPECT_EQ(driver.play(Driver::straight()), 1U);
        // After the first sample of a pose too.
        EXPECT_EQ(driver.play(each.frame), 1U);
        EXPECT_EQ(driver.play(Driver::straight(), 6), 1U);
        EXPECT_EQ(driver.play(Driver::straight()), 2U);
    }
}

TEST(EnrollmentSession, takesTheFirstSampleAsSoonAsItMay) {
    for (const std::optional<float> quality : {std::optional<float>(), std::optional(0.2F)}) {
        Driver driver;
        auto face = Driver::straight();
        face.quality = quality;
        // The hold begins after a warm-up of 1.5 s, its half second ends at 2 s; the third frame
        // from there is taken.
        EXPECT_EQ(driver.play(face, 18), 0U);
        EXPECT_EQ(driver.play(face), 1U);
    }
}

TEST(EnrollmentSession, aPoseThatTakesLongGetsEasierOnce) {
    Driver driver;
    driver.skipTo(TimeInterval(2));
    const auto slanted = Driver::face(0.2F, 0);
    EXPECT_EQ(driver.play(slanted, 81), 0U);  // up to 12 s
    EXPECT_EQ(driver.play(slanted, 6), 0U);
    EXPECT_EQ(driver.play(slanted, 4), 2U);
    // The next pose starts with its own patience: 0.2 was enough for the left only when widened.
    EXPECT_EQ(driver.session.hint(), Hint(Hint::Pose{EnrollmentPose::left}));
    EXPECT_EQ(driver.play(slanted, 96 + 6), 2U);
    EXPECT_EQ(driver.play(slanted), 3U);
}

}  // namespace
}  // namespace marrowby
