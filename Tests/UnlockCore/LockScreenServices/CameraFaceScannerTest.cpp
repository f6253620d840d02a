// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeCaptureSession.h"
#include "Tests/Fakes/FakeFaceVision.h"
#include "Tests/Fakes/FakeFourierTransform.h"
#include "Tests/Fakes/FakeImaging.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeWorkQueues.h"
#include "Tests/Fakes/ScriptedModels.h"
#include "Tests/Platforms/SystemWorkQueues.h"
#include "Unlock/macOS/MacWords.h"
#include "UnlockCore/Liveness/LivenessTuning.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"

#include <cmath>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr ScanID look{7};

FaceIdentity identity(std::string name, Embedding embedding) {
    FaceIdentity identity;
    identity.name = std::move(name);
    identity.modelIdentifier = "scripted";
    identity.dimension = 2;
    identity.samples.emplace_back().embedding = std::move(embedding);
    return identity;
}

class CameraFaceScannerTest : public testing::Test {
  protected:
    CameraFaceScannerTest() {
        session->cameras = {{.description = {"desk", "Desk camera"}, .formats = {}},
                            {.description = {"phone", "Phone"}, .formats = {}}};
        vision.addFace({0.4, 0.4, 0.3, 0.3}, {320, 240});
        enroll({identity("Owner", {1, 0})});
        configuration.threshold = 0.5F;
        make(queues);
    }
    ~CameraFaceScannerTest() override {
        scanner.reset();
        settle();
        EXPECT_TRUE(session->faults.empty()) << session->faults.front();
        EXPECT_FALSE(session->isRunning());
        EXPECT_FALSE(registry.isClaimed("unlock"));
    }

    void make(WorkQueues& own) {
        scanner = std::make_unique<CameraFaceScanner>(
            session,
            CameraFaceScanner::Services{own, mainThread, mainThread, imaging, vision, fourier,
                                        registry, macWords},
            [this]() -> std::expected<std::shared_ptr<FaceEmbedder>, FaceModelError> {
                ++embedderLoads;
                if (embedderFault) return std::unexpected(*embedderFault);
                return embedder;
            },
            [this]() -> std::expected<std::shared_ptr<AntiSpoofScoring>, RealFaceModelError> {
                ++antiSpoofLoads;
                if (antiSpoofFault) return std::unexpected(*antiSpoofFault);
                return antiSpoof;
            });
    }

    FaceScanning::Callbacks callbacks() {
        return {
            .onFrame =
                [this](ScanID id, const ScanObservation& observation) {
                    frames.emplace_back(id, observation);
                    if (onFrame) onFrame();
                },
            .onCameraFailed =
                [this](std::string message) {
                    failures.push_back(std::move(message));
                    if (onFailure) onFailure();
                },
            .onOtherCamera = [this](const std::string& camera) { otherCameras.push_back(camera); }};
    }
    void enroll(std::vector<FaceIdentity> faces) {
        configuration.identities =
            std::make_shared<const std::vector<FaceIdentity>>(std::move(faces));
    }
    void start(ScanID id = look) { scanner->start(id, configuration, callbacks()); }
    /// Everything that waits on any thread.
    void settle() {
        for (int turn = 0; turn < 2; ++turn) {
            queues.runAll();
            mainThread.runPosted();
        }
    }
    /// A look whose camera and models are running.
    void startFully(ScanID id = look) {
        start(id);
        settle();
    }
    void deliver(bool wasUnderWay = false) {
        mainThread.jump(TimeInterval(1.0 / 30));
        // No two in a row are the same.
        height = 481 - height;
        session->deliver(std::make_shared<FakeSourceImage>(320, height), wasUnderWay);
    }
    ScanObservation observe() {
        deliver();
        mainThread.runPosted();
        return frames.empty() ? ScanObservation{} : frames.back().second;
    }
    std::optional<MatchedFace> match() {
        const auto observation = observe();
        const auto* face = std::get_if<ScanObservation::Face>(&observation);
        return face ? face->match : std::nullopt;
    }

    std::shared_ptr<FakeCaptureSession> session = std::make_shared<FakeCaptureSession>();
    FakeWorkQueues queues;
    FakeMainThread mainThread;
    FakeImaging imaging;
    FakeFourierTransform fourier;
    FakeFaceVision vision;
    CameraUseRegistry registry;
    std::shared_ptr<ScriptedEmbedder> embedder = std::make_shared<ScriptedEmbedder>();
    std::shared_ptr<ScriptedAntiSpoof> antiSpoof = std::make_shared<ScriptedAntiSpoof>();
    std::optional<FaceModelError> embedderFault;
    std::optional<RealFaceModelError> antiSpoofFault;
    int embedderLoads = 0;
    int antiSpoofLoads = 0;

    ScanConfiguration configuration;
    std::vector<std::pair<ScanID, ScanObservation>> frames;
    std::vector<std::string> failures;
    std::vector<std::string> otherCameras;
    double height = 240;
    std::function<void()> onFrame;
    std::function<void()> onFailure;
    std::unique_ptr<CameraFaceScanner> scanner;
};

TEST_F(CameraFaceScannerTest, TellsOnTheMainThreadWhomEveryFrameShowsUntilTheyAreConfirmed) {
    startFully();
    EXPECT_EQ(session->attached(), "desk");
    const auto needed = livenessTuning(LivenessMode::standard).liveMinimumFrames;
    for (std::int64_t i = 1; i <= needed; ++i) {
        deliver();
        EXPECT_EQ(frames.size(), static_cast<std::size_t>(i) - 1);
        // The frame has been worked on in the camera's own turn: whatever came meanwhile is lost.
        queues.runAll();
        mainThread.runPosted();
        ASSERT_EQ(frames.size(), static_cast<std::size_t>(i));
        const LivenessDecision decision =
            i < needed ? LivenessDecision(LivenessDecision::Waiting{LivenessNeeds::realFace})
                       : LivenessDecision(LivenessDecision::Confirmed{});
        EXPECT_EQ(frames.back().first, look);
        EXPECT_EQ(frames.back().second,
                  ScanObservation(ScanObservation::Face{
                      .match = MatchedFace{.id = UUID{}, .name = "Owner", .similarity = 1},
                      .decision = decision}));
    }
    EXPECT_TRUE(session->settings.discardsLateFrames);
}

TEST_F(CameraFaceScannerTest, MatchesOnlyTheMostAlikeEnabledFaceAtTheThreshold) {
    startFully();
    for (const float similarity : {0.501F, 0.499F}) {
        embedder->embedding = {similarity, std::sqrt(1 - similarity * similarity)};
        EXPECT_EQ(match().has_value(), similarity > configuration.threshold) << similarity;
    }
    embedder->embedding = {1, 0};
    std::vector<FaceIdentity> faces = *configuration.identities;
    faces.front().isEnabled = false;
    faces.push_back(identity("Friend", {0.8F, 0.6F}));
    enroll(faces);
    startFully();
    EXPECT_EQ(match().value().name, "Friend");
    faces.back().modelIdentifier = "another";
    enroll(faces);
    startFully();
    EXPECT_FALSE(match());
}

TEST_F(CameraFaceScannerTest, TellsNoFaceWhereNoneIsUsable) {
    startFully();
    embedder->fault = FaceModelError::PixelBuffer{};
    EXPECT_EQ(observe(), ScanObservation(ScanObservation::NoFace{})) << "not embedded";
    embedder->fault.reset();
    for (const double width : {43.0, 44.0}) {
        vision.removeFaces();
        vision.addFace({0.1, 0.1, width / 320, 0.3}, {320, 240});
        EXPECT_EQ(std::holds_alternative<ScanObservation::NoFace>(observe()), width < 44) << width;
    }
    EXPECT_TRUE(failures.empty());
}

TEST_F(CameraFaceScannerTest, TellsOfAFaceThatTheEdgeCutsOff) {
    startFully();
    vision.removeFaces();
    vision.addFace({0.85, 0.4, 0.3, 0.3}, {320, 240});
    EXPECT_EQ(observe(), ScanObservation(ScanObservation::CutOff{}));
}

TEST_F(CameraFaceScannerTest, EndsALookWhoseEveryFrameFails) {
    const auto fails = [&](bool on) {
        antiSpoof->fault.reset();
        if (on) antiSpoof->fault = RealFaceModelError::PixelBuffer{};
    };
    startFully();
    for (int i = 0; i < 70; ++i) {
        fails(i % 20 != 19);
        observe();
    }
    EXPECT_TRUE(failures.empty()) << "a frame works now and then";
    fails(true);
    for (int i = 0; i < 40; ++i)
        observe();
    settle();
    EXPECT_EQ(failures,
              std::vector{description(RealFaceModelError(RealFaceModelError::PixelBuffer{}))});
    EXPECT_FALSE(session->isRunning());
}

TEST_F(CameraFaceScannerTest, FailsAtOnceWithoutACameraAndWorksAtTheNextLook) {
    const auto cameras = std::exchange(session->cameras, {});
    start();
    EXPECT_EQ(failures, std::vector<std::string>{"No camera found."});
    settle();
    EXPECT_FALSE(session->isRunning());

    session->cameras = cameras;
    startFully(ScanID{8});
    observe();
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_EQ(frames.front().first, ScanID{8});

    // A running camera does not stay on when the next look cannot open it.
    session->answer = CaptureAuthorization::denied;
    startFully(ScanID{9});
    EXPECT_EQ(failures.size(), 2U);
    EXPECT_FALSE(session->isRunning());
}

TEST_F(CameraFaceScannerTest, LoadsBothModelsOnceOffTheMainThread) {
    scanner->follow(true);
    scanner->follow(true);
    start();
    EXPECT_EQ(embedderLoads, 0) << "not on the main thread";
    deliver(true);
    mainThread.runPosted();
    EXPECT_EQ(vision.rectangleRequests, 0) << "frames that come before the models are skipped";
    settle();
    scanner->follow(true);
    for (const ScanID id : {ScanID{1}, ScanID{2}}) {
        startFully(id);
        observe();
        scanner->stop();
    }
    settle();
    EXPECT_EQ(embedderLoads, 1);
    EXPECT_EQ(antiSpoofLoads, 1);
    EXPECT_EQ(frames.size(), 2U);
}

TEST_F(CameraFaceScannerTest, HasTheModelsWhileLockedAndForTenMinutesAfterTheLastLockOrScan) {
    constexpr TimeInterval hour(3600);
    constexpr TimeInterval almost = CameraFaceScanner::keptFor - TimeInterval(1);
    const auto areLoaded = [&] {
        settle();
        EXPECT_EQ(vision.isPrepared, embedder.use_count() > 1);
        return vision.isPrepared;
    };
    scanner->follow(false);
    EXPECT_FALSE(areLoaded());
    EXPECT_TRUE(mainThread.timers().empty()) << "nothing to be woken for";
    scanner->follow(true);
    EXPECT_TRUE(areLoaded());
    mainThread.advance(hour);
    EXPECT_TRUE(areLoaded()) << "still locked";

    scanner->follow(false);
    mainThread.advance(almost);
    EXPECT_TRUE(areLoaded());
    startFully();
    mainThread.advance(hour);
    EXPECT_TRUE(areLoaded()) << "a scan runs";
    scanner->stop();
    mainThread.advance(almost);
    scanner->follow(true);
    mainThread.advance(hour);
    EXPECT_TRUE(areLoaded()) << "locked again";
    EXPECT_EQ(embedderLoads, 1);
    scanner->follow(false);
    mainThread.advance(CameraFaceScanner::keptFor);
    EXPECT_FALSE(areLoaded());
    EXPECT_TRUE(mainThread.timers().empty());

    // A scan that nothing announced loads them, too.
    startFully();
    EXPECT_TRUE(areLoaded());
    observe();
    EXPECT_EQ(frames.size(), 1U);
    EXPECT_EQ(embedderLoads, 2);
    scanner->stop();
}

TEST_F(CameraFaceScannerTest, EndsTheLookThatWaitsWhenAModelFailsToLoadAndTriesAgain) {
    embedderFault = FaceModelError::NotFound{"SFace.mlmodelc"};
    scanner->follow(true);
    settle();
    EXPECT_TRUE(failures.empty()) << "no look is waiting";
    scanner->follow(true);
    startFully();
    EXPECT_EQ(failures, std::vector{description(*embedderFault)});
    EXPECT_EQ(embedderLoads, 2) << "one attempt serves the preload and the look";
    EXPECT_FALSE(session->isRunning());

    embedderFault.reset();
    antiSpoofFault = RealFaceModelError::LoadFailed{"broken"};
    startFully(ScanID{8});
    EXPECT_EQ(failures.back(), description(*antiSpoofFault));
    EXPECT_FALSE(session->isRunning());

    antiSpoofFault.reset();
    vision.preparationFault = "The finder isn’t there.";
    startFully(ScanID{10});
    EXPECT_EQ(failures.back(), "The finder isn’t there.");

    vision.preparationFault.reset();
    startFully(ScanID{9});
    observe();
    EXPECT_EQ(failures.size(), 3U);
    EXPECT_EQ(frames.size(), 1U);
    EXPECT_EQ(embedderLoads, 3) << "the embedder that was loaded is kept";
}

TEST_F(CameraFaceScannerTest, TellsNothingAfterStop) {
    startFully();
    deliver();
    scanner->stop();
    mainThread.runPosted();
    EXPECT_TRUE(frames.empty()) << "an observation was on its way";
    deliver(true);
    settle();
    EXPECT_TRUE(frames.empty()) << "a sample was on its way";
    EXPECT_FALSE(session->isRunning());

    startFully();
    embedder->duringEmbedding = [&] { scanner->stop(); };
    deliver();
    settle();
    EXPECT_TRUE(frames.empty()) << "a frame was in work";
    scanner->stop();
}

TEST_F(CameraFaceScannerTest, TellsNothingOfAnOlderLook) {
    startFully(ScanID{1});
    deliver();
    configuration.cameraID = "phone";
    start(ScanID{2});
    settle();
    EXPECT_TRUE(frames.empty());
    EXPECT_EQ(session->attached(), "phone");
    observe();
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_EQ(frames.front().first, ScanID{2});
    const auto& face = std::get<ScanObservation::Face>(frames.front().second);
    EXPECT_EQ(face.decision, LivenessDecision(LivenessDecision::Waiting{LivenessNeeds::realFace}));
}

TEST_F(CameraFaceScannerTest, SaysWhenAnotherCameraLooks) {
    startFully();
    configuration.cameraID = "phone";
    startFully();
    EXPECT_TRUE(otherCameras.empty()) << "none was chosen, or it is there";
    session->camera("phone").description.isSuspended = true;
    startFully();
    configuration.cameraID = "unplugged";
    startFully();
    EXPECT_EQ(otherCameras, (std::vector<std::string>{"Desk camera", "Desk camera"}));
    EXPECT_TRUE(failures.empty());
}

TEST_F(CameraFaceScannerTest, TellsWhatItThinksToWhomItIsAsked) {
    FaceIdentity off = identity("Off", {0, 1});
    off.isEnabled = false;
    enroll({identity("Owner", {1, 0}), off});
    std::vector<ScanInsight> insights;
    auto asking = callbacks();
    asking.onInsight = [&](ScanInsight insight) { insights.push_back(std::move(insight)); };
    scanner->start(look, configuration, asking);
    settle();
    observe();
    ASSERT_EQ(insights.size(), 1U);
    const ScanInsight& seen = insights.front();
    EXPECT_EQ(seen.face, antiSpoof->lastBox);
    ASSERT_EQ(seen.likenesses.size(), 2U);
    EXPECT_EQ(seen.likenesses[0].name, "Owner");
    EXPECT_FLOAT_EQ(seen.likenesses[0].similarity, 1);
    EXPECT_FALSE(seen.likenesses[1].isEnabled);
    EXPECT_EQ(seen.likenessLimit, 0.5F);
    EXPECT_EQ(seen.cues.size(), allLivenessCues.size());
    EXPECT_EQ(seen.cues.front().level, 1.F);
    for (const ScanInsight::Cue& cue : seen.cues)
        EXPECT_GT(cue.limit, 0) << title(cue.cue).english();

    vision.removeFaces();
    observe();
    EXPECT_FALSE(insights.back().face);
    start();
    observe();
    EXPECT_EQ(insights.size(), 2U) << "nobody asked";
}

TEST_F(CameraFaceScannerTest, LetsItsCallbacksStopAndStartIt) {
    startFully(ScanID{1});
    deliver();
    deliver();
    onFrame = [&] { scanner->stop(); };
    mainThread.runPosted();
    EXPECT_EQ(frames.size(), 1U);

    onFrame = {};
    session->inputFault = "in use";
    configuration.cameraID = "phone";
    onFailure = [&] {
        session->inputFault.reset();
        start(ScanID{2});
    };
    startFully(ScanID{1});
    EXPECT_EQ(failures, std::vector<std::string>{"The camera couldn’t be opened: in use"});
    observe();
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames.back().first, ScanID{2});
}

TEST_F(CameraFaceScannerTest, GoesAwayWhileModelsLoad) {
    embedderFault = FaceModelError::PixelBuffer{};
    start();
    scanner.reset();
    settle();
    EXPECT_TRUE(failures.empty());
}

TEST_F(CameraFaceScannerTest, GoesAwayWhileFramesAreOnTheirWay) {
    startFully();
    deliver();
    scanner.reset();
    settle();
    EXPECT_TRUE(frames.empty());
}

/// Real threads; keeps hold of the camera's queue.
class CameraThreads final : public WorkQueues {
  public:
    std::shared_ptr<WorkQueue> camera;

    [[nodiscard]] std::shared_ptr<WorkQueue> serial(std::string label) override {
        return camera = real_->serial(std::move(label));
    }
    [[nodiscard]] std::shared_ptr<WorkQueue> background() override { return real_->background(); }

    void runOnCamera(const std::function<void()>& work) const {
        std::promise<void> done;
        camera->async([&] {
            work();
            done.set_value();
        });
        done.get_future().wait();
    }

  private:
    const std::unique_ptr<WorkQueues> real_ = systemWorkQueues();
};

TEST_F(CameraFaceScannerTest, WorksOnRealThreads) {
    CameraThreads threads;
    scanner.reset();
    make(threads);
    start();
    while (frames.size() < 6) {
        threads.runOnCamera([&] { deliver(); });
        mainThread.runPosted();
    }
    threads.camera->async([&] { deliver(); });
    scanner->stop();
    threads.runOnCamera([] {});
    mainThread.runPosted();
    EXPECT_EQ(frames.size(), 6U);
    scanner.reset();
    threads.runOnCamera([] {});
    threads.camera.reset();
}

}  // namespace
}  // namespace marrowby
