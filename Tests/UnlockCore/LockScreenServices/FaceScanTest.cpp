// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeFaceVision.h"
#include "Tests/Fakes/FakeFourierTransform.h"
#include "Tests/Fakes/FakeImaging.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/ScriptedModels.h"
#include "UnlockCore/Liveness/LivenessTuning.h"
#include "UnlockCore/LockScreenServices/FaceScan.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Waiting = LivenessDecision::Waiting;
using Confirmed = LivenessDecision::Confirmed;
using Denied = LivenessDecision::Denied;

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
        clock.jump(interval);
        frame.id += 1;
        frame.timestamp = clock.now();
        frame.image = picture(frame.id);
        return again();
    }
    /// The same frame once more.
    const FaceScan::Step& again() {
        return scan.take(frame, {recognizer, antiSpoof, vision, imaging, fourier, clock});
    }
    /// No two numbers give the same.
    Bitmap picture(std::int64_t number) const {
        if (isGrey) {
            return *Bitmap::create(320, 240, 320,
                                   {.bitsPerPixel = 8,
                                    .alpha = PixelFormat::Alpha::none,
                                    .colorModel = PixelFormat::ColorModel::gray},
                                   std::vector<std::uint8_t>(std::size_t{320} * 240));
        }
        std::vector<std::uint8_t> bytes(std::size_t{320} * 240 * 4);
        for (std::size_t i = 0; i < sizeof number; ++i)
            bytes[i] = static_cast<std::uint8_t>(number >> (8 * i));
        return *Bitmap::create(320, 240, std::size_t{320} * 4, rgba8, std::move(bytes));
    }
    void begin(LivenessMode mode, double framesPerSecond = 30) {
        scan = FaceScan(mode);
        interval = TimeInterval(1 / framesPerSecond);
    }
    /// How many frames that takes.
    std::int64_t seeUntilConfirmed() {
        for (std::int64_t frames = 1; frames < 100; ++frames) {
            if (isConfirmed(see())) return frames;
        }
        ADD_FAILURE() << "never confirmed";
        return 0;
    }
    static bool isConfirmed(const FaceScan::Step& step) {
        return std::holds_alternative<Confirmed>(step.liveness.decision);
    }

    FakeFaceVision vision;
    FakeImaging imaging;
    FakeFourierTransform fourier;
    FakeMainThread clock;
    std::shared_ptr<ScriptedEmbedder> embedder = std::make_shared<ScriptedEmbedder>();
    ScriptedAntiSpoof antiSpoof;
    FaceRecognizer recognizer{vision, imaging, embedder, 40};
    FaceScan scan{LivenessMode::standard};
    TimeInterval interval{1.0 / 30};
    bool isGrey = false;
    CameraFrame frame{.id = 0,
                      .image = picture(0),
                      .source = std::make_shared<FakeSourceImage>(320, 240),
                      .sourceSize = {320, 240},
                      .timestamp = {}};
};

const Rect place{0.4, 0.4, 0.3, 0.3};

TEST_F(FaceScanTest, countsADeviceOnWhateverFramesAreMissing) {
    vision.boxes = {{0.2, 0.2, 0.7, 0.7}};
    for (int i = 1; i <= 21; ++i) {
        see();
        if (i % 7 == 0) seeNobody();
    }
    vision.boxes.clear();
    for (int i = 0; i < 21; ++i)
        EXPECT_EQ(see().liveness.decision, LivenessDecision(Denied{LivenessCue::deviceDetected}));
}

TEST_F(FaceScanTest, confirmsAlthoughTheDetectorMissesAFaceNowAndThen) {
    for (const double framesPerSecond : {5.0, 15.0, 30.0}) {
        begin(LivenessMode::standard, framesPerSecond);
        int frames = 1;
        while (frames < 40 && !isConfirmed(frames % 15 == 7 ? seeNobody() : see()))
            ++frames;
        EXPECT_LE(frames, framesPerSecond < 30 ? 12 : 22) << framesPerSecond;
    }
}

TEST_F(FaceScanTest, dropsTheScoresOfAnotherFace) {
    const auto looksLike = [&](float similarity) {
        embedder->embedding = {similarity, std::sqrt(1 - similarity * similarity)};
    };
    const auto isGoneFor = [&](int frames) {
        for (int i = 0; i < frames; ++i)
            seeNobody();
    };
    struct Case {
        const char* what;
        std::function<void()> before;
        Rect place;
        bool isSame;
    };
    const Case cases[] = {
        {"moved a little", [] {}, {0.5, 0.45, 0.3, 0.3}, true},
        {"turned", [&] { looksLike(0.5F); }, place, true},
        {"missed for a moment", [&] { isGoneFor(3); }, place, true},
        {"the camera stopped for a moment", [&] { clock.jump(TimeInterval(1)); }, place, true},
        {"elsewhere", [] {}, {0.05, 0.05, 0.3, 0.3}, false},
        {"somebody else in the same place", [&] { looksLike(0.4F); }, place, false},
        {"gone and back", [&] { isGoneFor(22); }, place, false},
        {"the clock went back", [&] { clock.jump(TimeInterval(-0.5)); }, place, false},
    };
    for (const Case& c : cases) {
        begin(LivenessMode::standard);
        looksLike(1);
        const std::int64_t frames = seeUntilConfirmed();
        c.before();
        const auto& step = see(c.place);
        EXPECT_EQ(step.liveness.realFace.frames, c.isSame ? frames : 1) << c.what;
        EXPECT_EQ(isConfirmed(step), c.isSame) << c.what;
        EXPECT_EQ(step.liveness.frameCount, frames + 1) << c.what;
    }
}

TEST_F(FaceScanTest, confirmsNeitherOfTwoFacesThatTakeTurns) {
    for (int i = 0; i < 90; ++i) {
        embedder->embedding = {i / 10 % 2 == 0 ? 1.0F : 0.0F, i / 10 % 2 == 0 ? 0.0F : 1.0F};
        EXPECT_FALSE(isConfirmed(see()));
    }
}

TEST_F(FaceScanTest, hasNoReadingWhereNoScoreIs) {
    const auto damage = [&](LandmarkRegion region, double value) {
        vision.details.landmarks[0]->regions[region] = {{value, 10}};
    };
    struct Case {
        const char* what;
        Rect box;
        std::function<void()> spoil;
        bool isScored;
    };
    const Case cases[] = {
        {"the model fails", place,
         [&] { antiSpoof.fault = RealFaceModelError::UnexpectedInput{"spoiled"}; }, false},
        {"the search for rectangles fails", place, [&] { vision.boxesFault = "busy"; }, false},
        {"a grey picture", place, [&] { isGrey = true; }, false},
        {"a chin that is no number", place,
         [&] { damage(LandmarkRegion::faceContour, std::nan("")); }, true},
        {"a chin outside the picture", place, [&] { damage(LandmarkRegion::faceContour, -3); },
         true},
        {"at the picture's edge", {0.7, 0.4, 0.3, 0.3}, [] {}, true},
        {"wider than the picture", {-0.2, 0.3, 1.4, 0.4}, [] {}, true},
    };
    const LivenessDecision denied = Denied{LivenessCue::realFace};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        for (const bool isDenied : {false, true}) {
            begin(LivenessMode::standard);
            antiSpoof.live = isDenied ? 0 : 1;
            for (int i = 0; i < 10; ++i)
                see(c.box);
            antiSpoof.live = 1;
            for (int i = 1; i <= 15; ++i) {
                vision.removeFaces();
                vision.addFace(c.box, {320, 240});
                c.spoil();
                const auto& step = take();
                EXPECT_EQ(step.liveness.realFace.frames, std::min(20, c.isScored ? 10 + i : 10));
                if (isDenied) {
                    EXPECT_EQ(step.liveness.decision, denied);
                } else {
                    EXPECT_EQ(isConfirmed(step), c.isScored && i >= 10);
                }
            }
            antiSpoof.fault.reset();
            vision.boxesFault.reset();
            isGrey = false;
        }
    }
}

TEST_F(FaceScanTest, takesAsMuchTimeWhateverTheCamerasPace) {
    struct Case {
        double framesPerSecond;
        std::int64_t standard;
        std::int64_t strict;
    };
    for (const Case& c :
         {Case{5, 8, 10}, Case{7.5, 8, 10}, Case{10, 8, 10}, Case{15, 10, 12}, Case{30, 20, 24}}) {
        begin(LivenessMode::standard, c.framesPerSecond);
        EXPECT_EQ(seeUntilConfirmed(), c.standard) << c.framesPerSecond;
        begin(LivenessMode::strict, c.framesPerSecond);
        const LivenessDecision needsTurn = Waiting{LivenessNeeds::headTurn};
        for (std::int64_t i = 1; i <= c.strict; ++i)
            EXPECT_EQ(see().liveness.decision == needsTurn, i == c.strict) << c.framesPerSecond;
    }
}

TEST_F(FaceScanTest, deniesADeviceAtEveryPace) {
    vision.boxes = {{0.2, 0.2, 0.7, 0.7}};
    for (const double framesPerSecond : {5.0, 7.5, 10.0, 15.0, 30.0}) {
        begin(LivenessMode::standard, framesPerSecond);
        for (int i = 0; i < 60; ++i)
            EXPECT_FALSE(isConfirmed(see())) << framesPerSecond;
        EXPECT_TRUE(std::holds_alternative<Denied>(see().liveness.decision));
    }
}

TEST_F(FaceScanTest, takesARepeatedFrameForOne) {
    for (int i = 0; i < 10; ++i)
        see();
    const LivenessSnapshot before = see().liveness;
    const auto stamp = frame.timestamp;
    for (int i = 1; i <= 50; ++i) {
        // The same picture, later; and another picture at the same time.
        frame.timestamp = i % 2 == 0 ? stamp : stamp + interval * i;
        frame.image = picture(i % 2 == 0 ? 1000 + i : frame.id);
        EXPECT_EQ(again().liveness, before);
    }
    // Two of each, as of a camera of 15 that is asked for 30.
    begin(LivenessMode::standard);
    std::int64_t pictures = 1;
    for (; pictures < 50 && !isConfirmed(see()); ++pictures) {
        clock.jump(interval);
        frame.timestamp = clock.now();
        again();
    }
    EXPECT_EQ(pictures, 10);
}

/// Somebody takes a bad picture away and holds up one that passes, while the camera changes its
/// pace and the clock its time.
TEST_F(FaceScanTest, confirmsNothingBecauseThePaceChanges) {
    std::mt19937 random(18);
    const auto below = [&](int end) { return std::uniform_int_distribution(0, end - 1)(random); };
    constexpr double paces[] = {5, 7.5, 10, 15, 30};
    int confirmed = 0;
    for (int look = 0; look < 100; ++look) {
        begin(LivenessMode::standard);
        const int change = 3 + below(30);
        TimeInterval agreed{};
        int agreeing = 0;
        for (int i = 0; i < 80; ++i) {
            if (below(12) == 0) interval = TimeInterval(1 / paces[below(5)]);
            if (below(40) == 0) clock.jump(TimeInterval(below(2) == 0 ? -1 : 0.5));
            antiSpoof.live = i < change ? 0.3F : 1.0F;
            const auto& step = see();
            if (i < change) {
                EXPECT_FALSE(isConfirmed(step));
                continue;
            }
            ++agreeing;
            if (i > change) agreed += interval;
            if (!isConfirmed(step)) continue;
            // At a steady pace it takes as much: 0.62 is the mean of 46 % ones.
            EXPECT_GE(agreed, TimeInterval(0.25)) << look;
            EXPECT_GE(agreeing, 4) << look;
            ++confirmed;
            break;
        }
    }
    EXPECT_GT(confirmed, 80);
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
    vision.boxesFault.reset();
}

TEST_F(FaceScanTest, keepsItsLivenessOnAFrameWithoutFace) {
    seeUntilConfirmed();
    EXPECT_EQ(antiSpoof.lastBox, see().recognition->face.boundingBox);
    const auto& step = seeNobody();
    ASSERT_FALSE(step.recognition);
    EXPECT_EQ(step.liveness.decision, LivenessDecision(Confirmed{}));
    // Nor is a face without landmarks one that could be confirmed.
    vision.addFace(place, {320, 240});
    vision.details.landmarks[0].reset();
    EXPECT_FALSE(take().recognition);
}

TEST_F(FaceScanTest, tellsWhatFailedFromNobodyThere) {
    struct Case {
        const char* what;
        std::function<void()> spoil;
        std::string fault;
    };
    const FaceModelError embedding = FaceModelError::PixelBuffer{};
    const RealFaceModelError scoring = RealFaceModelError::PixelBuffer{};
    const Case cases[] = {
        {"nobody", [&] { vision.removeFaces(); }, ""},
        {"no landmarks", [&] { vision.details.landmarks[0].reset(); }, ""},
        {"finder", [&] { vision.rectanglesFault = "The finder’s."; }, "The finder’s."},
        {"embedder", [&] { embedder->fault = embedding; }, description(embedding)},
        {"real-face model", [&] { antiSpoof.fault = scoring; }, description(scoring)},
        {"rectangles", [&] { vision.boxesFault = "The system’s."; }, "The system’s."},
    };
    for (const Case& c : cases) {
        see();
        c.spoil();
        EXPECT_EQ(take().fault.value_or(""), c.fault) << c.what;
        vision.rectanglesFault.reset();
        vision.boxesFault.reset();
        embedder->fault.reset();
        antiSpoof.fault.reset();
        EXPECT_FALSE(see().fault) << c.what;
    }
}

TEST_F(FaceScanTest, tellsAFaceThatTheEdgeCutsOffFromOneThatCannotBeLinedUp) {
    using CutOff = FaceRecognitionError::CutOff;
    EXPECT_EQ(see({0.85, 0.4, 0.3, 0.3}).recognition.error(), FaceRecognitionError(CutOff{}))
        << "an eye is outside";
    EXPECT_TRUE(see({0.78, 0.4, 0.3, 0.3}).recognition) << "both are inside";
    vision.removeFaces();
    vision.addFace({0.7, 0.4, 0.3, 0.3}, {320, 240});
    vision.details.landmarks[0].reset();
    EXPECT_EQ(take().recognition.error(), FaceRecognitionError(CutOff{}));
}

}  // namespace
}  // namespace marrowby
