#include "Tests/Fakes/FakeImaging.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/UnlockCore/LockScreenServices/LookBench.h"
#include "UnlockCore/Liveness/LivenessTuning.h"
#include "UnlockCore/LockScreenServices/FaceScan.h"

#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Waiting = LivenessDecision::Waiting;
using Confirmed = LivenessDecision::Confirmed;

class FaceScanTest : public testing::Test {
  protected:
    /// The next frame, with one face at this place.
    const FaceScan::Step& see(const Rect& box = {0.4, 0.4, 0.3, 0.3}) {
        vision.removeFaces();
        vision.addFace(box, {320, 240});
        return take();
    }
    const FaceScan::Step& seeNobody() {
        vision.removeFaces();
        return take();
    }
    const FaceScan::Step& take() {
        clock.jump(TimeInterval(0.03125));
        frame.id += 1;
        frame.timestamp = clock.now();
        return scan.take(frame, recognizer, antiSpoof, clock);
    }
    void seeUntilConfirmed() {
        const auto frames = livenessTuning(LivenessMode::standard).liveMinimumFrames;
        for (std::int64_t i = 0; i + 1 < frames; ++i) {
            ASSERT_EQ(see().liveness.decision, LivenessDecision(Waiting{LivenessNeeds::realFace}));
        }
        ASSERT_EQ(see().liveness.decision, LivenessDecision(Confirmed{}));
    }

    FakeFaceVision vision;
    FakeImaging imaging;
    FakeMainThread clock;
    std::shared_ptr<ScriptedEmbedder> embedder = std::make_shared<ScriptedEmbedder>();
    ScriptedAntiSpoof antiSpoof;
    FaceRecognizer recognizer{vision, imaging, embedder, 40};
    FaceScan scan{LivenessMode::standard};
    CameraFrame frame{.id = 0,
                      .image = *imaging.render(FakeSourceImage(320, 240), {0, 0, 320, 240}, 1),
                      .source = nullptr,
                      .sourceSize = {320, 240},
                      .timestamp = {}};
};

TEST_F(FaceScanTest, gathersTheScoresOfTheFaceItFollows) {
    embedder->duringEmbedding = [&] { clock.jump(TimeInterval(0.25)); };
    const auto& step = see({0.4, 0.4, 0.3, 0.25});
    ASSERT_TRUE(step.recognition);
    EXPECT_EQ(antiSpoof.lastBox, step.recognition->face.boundingBox);
    EXPECT_EQ(step.liveness.realFace.frames, 1);
    EXPECT_EQ(step.duration, TimeInterval(0.25));
    embedder->duringEmbedding = {};

    antiSpoof.live = 0.5F;
    EXPECT_EQ(see({0.45, 0.4, 0.3, 0.25}).liveness.realFace.mean, 0.75F);
}

TEST_F(FaceScanTest, startsOverForAnotherFace) {
    const auto looksLike = [&](float similarity) {
        embedder->embedding = {similarity, std::sqrt(1 - similarity * similarity)};
    };
    struct Case {
        const char* what;
        std::function<void()> before;
        Rect place;
        std::int64_t scores;
    };
    const Rect place{0.4, 0.4, 0.3, 0.3};
    const Case cases[] = {
        {"the same face, moved a little", [] {}, {0.5, 0.45, 0.3, 0.3}, 6},
        {"the same face, turned", [&] { looksLike(0.5F); }, place, 6},
        {"a face elsewhere", [] {}, {0.0, 0.0, 0.3, 0.3}, 1},
        {"somebody else in the same place", [&] { looksLike(0.4F); }, place, 1},
        {"a face that was gone", [&] { seeNobody(); }, place, 1},
    };
    for (const Case& c : cases) {
        scan = FaceScan(LivenessMode::standard);
        looksLike(1);
        seeUntilConfirmed();
        c.before();
        EXPECT_EQ(see(c.place).liveness.realFace.frames, c.scores) << c.what;
    }
}

TEST_F(FaceScanTest, neverConfirmsAPictureByTheScoresOfAPersonBeforeIt) {
    seeUntilConfirmed();
    embedder->embedding = {0, 1};
    antiSpoof.live = 0.01F;
    while (true) {
        const auto decision = see().liveness.decision;
        ASSERT_FALSE(std::holds_alternative<Confirmed>(decision));
        if (std::holds_alternative<LivenessDecision::Denied>(decision)) break;
    }
}

TEST_F(FaceScanTest, goesOnWithoutAScore) {
    see();
    antiSpoof.fault = RealFaceModelError::UnexpectedInput{"the face's box doesn't fit the frame"};
    const auto& unscored = see();
    EXPECT_TRUE(unscored.recognition);
    EXPECT_EQ(unscored.liveness.realFace.frames, 1);
    EXPECT_EQ(unscored.liveness.frameCount, 2);

    antiSpoof.fault.reset();
    frame.image = *Bitmap::create(320, 240, 320,
                                  {.bitsPerPixel = 8,
                                   .alpha = PixelFormat::Alpha::none,
                                   .colorModel = PixelFormat::ColorModel::gray},
                                  std::vector<std::uint8_t>(std::size_t{320} * 240));
    EXPECT_EQ(see().liveness.realFace.frames, 1) << "a grey picture";
}

TEST_F(FaceScanTest, keepsItsLivenessOnAFrameWithoutFace) {
    seeUntilConfirmed();
    const auto& step = seeNobody();
    ASSERT_FALSE(step.recognition);
    EXPECT_EQ(step.recognition.error(), FaceRecognitionError(FaceRecognitionError::NoFace{}));
    EXPECT_EQ(step.liveness.decision, LivenessDecision(Confirmed{}));
}

TEST_F(FaceScanTest, asksForNoHeadTurnAsLongAsNoneIsMeasured) {
    scan = FaceScan(LivenessMode::strict);
    const auto frames = livenessTuning(LivenessMode::strict).liveMinimumFrames;
    for (std::int64_t i = 0; i + 1 < frames; ++i) {
        EXPECT_EQ(see().liveness.decision, LivenessDecision(Waiting{LivenessNeeds::realFace}));
    }
    EXPECT_EQ(see().liveness.decision, LivenessDecision(Confirmed{}));
}

}  // namespace
}  // namespace marrowby
