// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeCaptureSession.h"
#include "Tests/Fakes/FakeImaging.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeWorkQueues.h"
#include "UnlockCore/Recognition/CameraManager.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;

class CameraManagerTest : public testing::Test {
  protected:
    CameraManagerTest() {
        session->cameras = {
            {.description = {"desk", "Desk camera"},
             .formats = {{640, 480, {{5, 30}}}, {1280, 720, {{5, 15}, {20, 60}}}}},
            {.description = {"built-in", "Built-in camera"},
             .type = CaptureDeviceType::builtInWideAngleCamera,
             .position = CapturePosition::front,
             .formats = {{640, 480, {{30, 30}}}, {1280, 720, {{10, 24}}}}},
            {.description = {"phone", "Phone"},
             .type = CaptureDeviceType::continuityCamera,
             .formats = {{1280, 720, {{60, 60}}}}},
        };
        manager->setOnFrame([this](const CameraFrame& frame) { ids.push_back(frame.id); });
    }
    ~CameraManagerTest() override {
        manager.reset();
        queues.runAll();
        mainThread.runPosted();
        EXPECT_TRUE(session->faults.empty()) << session->faults.front();
        EXPECT_FALSE(registry.isClaimed("unlock"));
        EXPECT_FALSE(session->isRunning());
    }

    void start(const std::optional<std::string>& id = std::nullopt) {
        ASSERT_TRUE(manager->start(id));
        queues.runAll();
    }
    void deliver(double width = 640, double height = 480) {
        session->deliver(std::make_shared<FakeSourceImage>(width, height));
    }

    std::shared_ptr<FakeCaptureSession> session = std::make_shared<FakeCaptureSession>();
    FakeWorkQueues queues;
    FakeMainThread mainThread;
    FakeImaging imaging;
    CameraUseRegistry registry;
    std::unique_ptr<CameraManager> manager = std::make_unique<CameraManager>(
        session, CameraManager::Services{queues, mainThread, mainThread, imaging, registry}, 640);
    std::vector<std::int64_t> ids;
};

TEST_F(CameraManagerTest, ReportsPermissionAndCameras) {
    using Permission = CameraManager::Permission;
    const std::vector<std::pair<CaptureAuthorization, Permission>> cases{
        {CaptureAuthorization::notDetermined, Permission::notDetermined},
        {CaptureAuthorization::restricted, Permission::restricted},
        {CaptureAuthorization::denied, Permission::denied},
        {CaptureAuthorization::authorized, Permission::granted},
        {CaptureAuthorization::unknown, Permission::denied}};
    for (const auto& [authorization, permission] : cases) {
        session->answer = authorization;
        EXPECT_EQ(manager->permission(), permission);
        EXPECT_EQ(manager->start({}).has_value(), permission == Permission::granted);
        EXPECT_EQ(session->calls.empty(), permission != Permission::granted);
        session->calls.clear();
    }
    EXPECT_EQ(CameraManager::availableCameras(*session).size(), session->cameras.size());

    session->grantsAccess = false;
    std::optional<bool> granted;
    manager->requestAccess([&](bool answer) { granted = answer; });
    EXPECT_FALSE(granted) << "the answer comes on the main thread";
    mainThread.runPosted();
    EXPECT_EQ(granted, false);
}

TEST_F(CameraManagerTest, ChoosesTheAskedCameraElseTheDefault) {
    start("phone");
    EXPECT_EQ(session->attached(), "phone");
    start("gone");
    EXPECT_EQ(session->attached(), "built-in");
    session->cameras.erase(session->cameras.begin() + 1);
    start();
    EXPECT_EQ(session->attached(), "desk");
    session->camera("desk").description.isSuspended = true;
    EXPECT_EQ(manager->start("desk").error(), CameraError(CameraError::NoCamera{}))
        << "the phone was not asked for";
    start("phone");
    session->cameras.clear();
    EXPECT_EQ(manager->start("desk").error(), CameraError(CameraError::NoCamera{}));
}

TEST_F(CameraManagerTest, TakesNoCameraInAClosedLidAndNoPhoneUnasked) {
    session->camera("built-in").description.isSuspended = true;
    std::ranges::rotate(session->cameras, session->cameras.begin() + 2);
    session->camera("phone").description.isSuspended = true;
    start("built-in");
    EXPECT_EQ(session->attached(), "desk") << "neither the lid's nor the default one";
    session->camera("built-in").description.isSuspended = false;
    session->camera("phone").description.isSuspended = false;
    session->camera("built-in").position = CapturePosition::unspecified;
    start();
    EXPECT_EQ(session->attached(), "built-in") << "though the phone is the default one";
}

TEST_F(CameraManagerTest, TheFormatOutlastsThePresetWheneverTheSessionStartsOrStops) {
    start("desk");
    EXPECT_EQ(session->camera("desk").activeFormat, 1U);
    manager->stop();
    ASSERT_TRUE(manager->start("desk"));
    manager->stop();
    ASSERT_TRUE(manager->start("phone"));
    ASSERT_TRUE(manager->start("desk"));
    queues.runAll();
    EXPECT_EQ(session->camera("desk").activeFormat, 1U);
    for (const auto& camera : session->cameras)
        EXPECT_EQ(camera.locks, 0) << camera.description.localizedName;
}

TEST_F(CameraManagerTest, ConfiguresOnceAndKeepsTheSameCamera) {
    start("desk");
    EXPECT_THAT(session->calls,
                ElementsAre("begin", "preset", "output", "add desk", "commit", "start"));
    EXPECT_TRUE(session->settings.discardsLateFrames);
    EXPECT_TRUE(manager->isRunning());

    session->calls.clear();
    session->camera("desk").activeFormat.reset();
    start("desk");
    EXPECT_THAT(session->calls, ElementsAre("begin", "commit"));
    EXPECT_FALSE(session->camera("desk").activeFormat) << "the format is not applied again";
    start("phone");
    EXPECT_THAT(session->calls,
                ElementsAre("begin", "commit", "begin", "remove desk", "add phone", "commit"));
    // A camera that was unplugged and returned is a new one.
    session->camera("phone").plugs = 1;
    session->calls.clear();
    start("phone");
    EXPECT_THAT(session->calls, ElementsAre("begin", "remove ", "add phone", "commit"));
}

TEST_F(CameraManagerTest, AppliesAndReportsAFormatWhereTheCameraAllowsIt) {
    using Format = CameraManager::Format;
    const auto format = [this] {
        EXPECT_EQ(manager->opened()->device.id, session->attached());
        return manager->opened()->format;
    };
    EXPECT_FALSE(manager->opened());
    start("desk");
    EXPECT_EQ(format(), (Format{1280, 720, 30}));
    EXPECT_EQ(session->camera("desk").activeFormat, 1U);
    EXPECT_EQ(session->camera("desk").frameDuration, (FrameDuration{1, 30}));

    start("phone");
    EXPECT_EQ(session->camera("phone").activeFormat, 0U);
    EXPECT_FALSE(session->camera("phone").frameDuration) << "it has 60 only";
    EXPECT_EQ(format(), (Format{1280, 720, std::nullopt}));

    session->camera("built-in").isBusy = true;
    start("built-in");
    EXPECT_EQ(session->attached(), "built-in");
    EXPECT_FALSE(session->camera("built-in").activeFormat);
    EXPECT_FALSE(format());
}

TEST_F(CameraManagerTest, ACameraThatCannotBeOpenedLeavesNone) {
    start("desk");
    session->inputFault = "It is on fire.";
    EXPECT_EQ(manager->start("phone").error(),
              CameraError(CameraError::CannotOpen{"It is on fire."}));
    EXPECT_EQ(session->attached(), std::nullopt);
    EXPECT_FALSE(manager->opened());
    EXPECT_EQ(session->calls.back(), "commit");

    session->inputFault.reset();
    start("desk");
    EXPECT_EQ(session->attached(), "desk");
}

TEST_F(CameraManagerTest, FramesAreScaledDownAndNumbered) {
    start();
    session->deliver(nullptr);
    deliver(1920, 1080);
    const auto frame = manager->latestFrame();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->id, 1);
    EXPECT_EQ(frame->image.width(), 640);
    EXPECT_EQ(frame->image.height(), 360);

    imaging.renderFails = true;
    deliver();
    imaging.renderFails = false;
    deliver(320, 240);
    EXPECT_EQ(manager->latestFrame()->image.width(), 320) << "never enlarged";
    EXPECT_THAT(ids, ElementsAre(1, 2)) << "a frame that fails takes no number";
}

TEST_F(CameraManagerTest, AStopDropsFramesInProgress) {
    start();
    deliver();
    manager->stop();
    EXPECT_FALSE(manager->latestFrame());
    deliver();
    queues.runAll();
    session->deliver(std::make_shared<FakeSourceImage>(640, 480), true);
    EXPECT_THAT(ids, ElementsAre(1));
    EXPECT_FALSE(manager->isRunning());

    start();
    EXPECT_FALSE(manager->latestFrame());
    deliver();
    EXPECT_THAT(ids, ElementsAre(1, 2)) << "numbers go on";
}

TEST_F(CameraManagerTest, TheClaimLastsUntilTheLastStopIsDone) {
    start();
    EXPECT_TRUE(registry.isClaimed("unlock"));
    manager->stop();
    queues.runAll();
    EXPECT_TRUE(registry.isClaimed("unlock")) << "withdrawn on the main thread";
    mainThread.runPosted();
    EXPECT_FALSE(registry.isClaimed("unlock"));

    start();
    manager->stop();
    ASSERT_TRUE(manager->start({}));
    queues.runAll();
    mainThread.runPosted();
    EXPECT_TRUE(registry.isClaimed("unlock")) << "a start came in between";
    EXPECT_TRUE(session->isRunning());
}

TEST_F(CameraManagerTest, NothingReachesADestroyedManager) {
    start();
    manager->stop();
    ASSERT_TRUE(manager->start({}));
    manager.reset();
    queues.runAll();
    mainThread.runPosted();
    session->deliver(std::make_shared<FakeSourceImage>(640, 480), true);
    EXPECT_TRUE(ids.empty());
    EXPECT_EQ(session->attached(), std::nullopt);
}

TEST_F(CameraManagerTest, FramesMayComeWhileTheOwnerStartsAndStops) {
    start();
    std::thread camera([&] {
        for (int i = 0; i < 200; ++i) {
            session->deliver(std::make_shared<FakeSourceImage>(8, 6), true);
        }
    });
    std::int64_t newest = 0;
    for (int i = 0; i < 200; ++i) {
        manager->stop();
        EXPECT_FALSE(manager->latestFrame());
        start();
        if (const auto frame = manager->latestFrame()) {
            EXPECT_GT(frame->id, newest) << "of this start";
            newest = frame->id;
        }
    }
    camera.join();
    EXPECT_TRUE(std::ranges::is_sorted(ids));
}

TEST(CameraUseRegistry, CountsTheClaimsOfAName) {
    CameraUseRegistry registry;
    registry.withdraw("unlock");
    registry.claim("unlock");
    registry.claim("unlock");
    registry.claim("mirror");
    registry.withdraw("unlock");
    EXPECT_TRUE(registry.isClaimed("mirror") && registry.isClaimed("unlock"));
    registry.withdraw("unlock");
    EXPECT_FALSE(registry.isClaimed("unlock"));
}

}  // namespace
}  // namespace marrowby
