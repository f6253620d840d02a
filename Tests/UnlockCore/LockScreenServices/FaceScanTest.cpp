#include "Tests/Fakes/FakeFaceVision.h"
#include "Tests/Fakes/FakeFourierTransform.h"
#include "Tests/Fakes/FakeImaging.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/ScriptedEmbedder.h"
#include "Tests/UnlockCore/LockScreenServices/ScriptedAntiSpoof.h"
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
        return scan.take(frame, {recognizer, antiSpoof, vision, imaging, fourier, clock});
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
    FakeFourierTransform fourier;
    FakeMainThread clock;
    std::shared_ptr<ScriptedEmbedder> embedder = std::make_shared<ScriptedEmbedder>();
    ScriptedAntiSpoof antiSpoof;
    FaceRecognizer recognizer{vision, imaging, embedder, 40};
    FaceScan scan{LivenessMode::standard};
    CameraFrame frame{.id = 0,
                      .image = *imaging.render(FakeSourceImage(320, 240), {0, 0, 320, 240}, 1),
                      .source = std::make_shared<FakeSourceImage>(320, 240),
                      .sourceSize = {320, 240},
                      .timestamp = {}};
};

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
    const std::int64_t all = livenessTuning(LivenessMode::standard).averagedFrames;
    const Case cases[] = {
        {"the same face, moved a little", [] {}, {0.5, 0.45, 0.3, 0.3}, all},
        {"the same face, turned", [&] { looksLike(0.5F); }, place, all},
        {"a face elsewhere", [] {}, {0.05, 0.05, 0.3, 0.3}, 1},
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

TEST_F(FaceScanTest, confirmsNothingByScoresFromBeforeABadFrame) {
    const Rect place{0.4, 0.4, 0.3, 0.3};
    const auto damage = [&](double value) {
        vision.details.landmarks[0]->regions[LandmarkRegion::faceContour] = {{value, 10}};
    };
    struct Case {
        const char* what;
        Rect box;
        std::function<void()> spoil;
    };
    const Case cases[] = {
        {"the model fails", place,
         [&] { antiSpoof.fault = RealFaceModelError::UnexpectedInput{"spoiled"}; }},
        {"a grey picture", place,
         [&] {
             frame.image = *Bitmap::create(320, 240, 320,
                                           {.bitsPerPixel = 8,
                                            .alpha = PixelFormat::Alpha::none,
                                            .colorModel = PixelFormat::ColorModel::gray},
                                           std::vector<std::uint8_t>(std::size_t{320} * 240));
         }},
        {"landmarks that are no numbers", place, [&] { damage(std::nan("")); }},
        {"landmarks outside the picture", place, [&] { damage(-3); }},
        {"at the picture's edge", {0.7, 0.4, 0.3, 0.3}, [] {}},
        {"larger than the picture", {-0.2, -0.2, 1.4, 1.4}, [] {}},
    };
    const auto picture = frame.image;
    const LivenessDecision denied = LivenessDecision::Denied{LivenessCue::realFace};
    const LivenessDecision waiting = Waiting{LivenessNeeds::realFace};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        for (const bool isDenied : {false, true}) {
            scan = FaceScan(LivenessMode::standard);
            antiSpoof.live = isDenied ? 0 : 1;
            const auto frames = livenessTuning(LivenessMode::standard).liveMinimumFrames;
            for (std::int64_t i = 0; i + 1 < frames; ++i)
                see();
            ASSERT_EQ(see().liveness.decision, isDenied ? denied : LivenessDecision(Confirmed{}));
            antiSpoof.live = 1;
            for (int i = 0; i < (isDenied ? 1 : 20); ++i) {
                vision.removeFaces();
                vision.addFace(c.box, {320, 240});
                c.spoil();
                const auto& step = take();
                EXPECT_EQ(step.liveness.decision, isDenied ? denied : waiting);
            }
            antiSpoof.fault.reset();
            frame.image = picture;
        }
    }
}

TEST_F(FaceScanTest, measuresEveryCue) {
    // A phone around the face, no turn, no motion; the fake picture is too small for a pattern.
    vision.boxes = {{0.3, 0.3, 0.6, 0.6}};
    const auto& states = see().liveness.cueStates;
    EXPECT_EQ(states.at(LivenessCue::deviceDetected).reading, (CueReading{1, 1}));
    EXPECT_GT(states.at(LivenessCue::glossGlare).reading.confidence, 0);
    EXPECT_EQ(states.at(LivenessCue::moire).reading, CueReading{});
    EXPECT_EQ(states.at(LivenessCue::planar).reading, CueReading{});
    vision.boxesFault = "The system can’t look for rectangles.";
    EXPECT_EQ(see().liveness.cueStates.at(LivenessCue::deviceDetected).reading, CueReading{});
}

TEST_F(FaceScanTest, keepsItsLivenessOnAFrameWithoutFace) {
    seeUntilConfirmed();
    EXPECT_EQ(antiSpoof.lastBox, see().recognition->face.boundingBox);
    const auto& step = seeNobody();
    ASSERT_FALSE(step.recognition);
    EXPECT_EQ(step.liveness.decision, LivenessDecision(Confirmed{}));
    // Nor is a face without landmarks one that could be confirmed.
    vision.addFace({0.4, 0.4, 0.3, 0.3}, {320, 240});
    vision.details.landmarks[0].reset();
    EXPECT_FALSE(take().recognition);
    EXPECT_EQ(see().liveness.realFace.frames, 1);
}

TEST_F(FaceScanTest, asksForAHeadTurnInStrictMode) {
    scan = FaceScan(LivenessMode::strict);
    const auto frames = livenessTuning(LivenessMode::strict).liveMinimumFrames;
    for (std::int64_t i = 0; i + 1 < frames; ++i)
        see();
    EXPECT_EQ(see().liveness.decision, LivenessDecision(Waiting{LivenessNeeds::headTurn}));
}

}  // namespace
}  // namespace marrowby
