// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Posix/OpenSslCipher.h"
#include "Tests/Fakes/FakeCaptureSession.h"
#include "Tests/Fakes/FakeDefaultsStore.h"
#include "Tests/Fakes/FakeDesktopNotices.h"
#include "Tests/Fakes/FakeFaceVision.h"
#include "Tests/Fakes/FakeFileSystem.h"
#include "Tests/Fakes/FakeFourierTransform.h"
#include "Tests/Fakes/FakeImaging.h"
#include "Tests/Fakes/FakeInputIdle.h"
#include "Tests/Fakes/FakeKeyEvents.h"
#include "Tests/Fakes/FakeKeyStore.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeNeuralModels.h"
#include "Tests/Fakes/FakeOwnerCheck.h"
#include "Tests/Fakes/FakePasswordVerifier.h"
#include "Tests/Fakes/FakeProcessActivities.h"
#include "Tests/Fakes/FakeScreenLock.h"
#include "Tests/Fakes/FakeSessionUnlocking.h"
#include "Tests/Fakes/FakeSpaceKeys.h"
#include "Tests/Fakes/FakeSystemSettings.h"
#include "Tests/Fakes/FakeWindowServer.h"
#include "Tests/Fakes/FakeWorkQueues.h"
#include "Unlock/Model/UnlockModel.h"
#include "Unlock/SelfCheck.h"
#include "Unlock/macOS/MacWords.h"
#include "UnlockCore/Enrollment/EnrollmentPose.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace marrowby {

/// A whole computer of fakes for one application, with an owner who says yes and one camera.
struct FakeComputer {
    FakeComputer() {
        owner.answer = true;
        // The embedder is looked for on the real disk: any folder that is there will do.
        models.description = {
            .inputs = {{.name = "image",
                        .kind = NeuralFeature::Kind::image,
                        .imageConstraint = NeuralFeature::ImageConstraint{112, 112},
                        .shape = {}}},
            .outputs = {{.name = "embedding",
                         .kind = NeuralFeature::Kind::multiArray,
                         .imageConstraint = {},
                         .shape = {1, 128}}},
            .metadata = {{"marrowby.model.identifier", "test-embedder"}}};
        models.answer = [](auto /*inputs*/) {
            return FakeNeuralModels::Outputs(
                std::vector{NeuralOutput{"embedding", std::vector(128, 0.1F)}});
        };
        enrollmentCamera->cameras = {{.description = {"desk", "Desk camera"}}};
    }

    [[nodiscard]] UnlockPlatform platform() {
        return {.words = *words,
                .mainThread = mainThread,
                .clock = mainThread,
                .queues = queues,
                .lockEvents = lockEvents,
                .lockState = lockState,
                .inputIdle = inputIdle,
                .spaceKeys = spaceKeys,
                .scanCamera = scanCamera,
                .enrollmentCamera = enrollmentCamera,
                .scanVision = vision,
                .enrollmentVision = vision,
                .models = models,
                .imaging = imaging,
                .fourier = fourier,
                .cipher = cipher,
                .files = *disk,
                .keyStore = keyStore,
                .ownerCheck = owner,
                .passwordVerifier = passwordVerifier,
                .defaults = *store,
                .keyEvents = keyEvents,
                .systemSettings = systemSettings,
                .windowServer = windowServer,
                .sessionUnlocking = desktop,
                .activities = &activities,
                .notices = &notices,
                .statusItem = &statusItem};
    }

    [[nodiscard]] UnlockModel::Resources resources() const {
        return {.dataBase = "/data",
                .testTag = {},
                .models = {.folder = MARROWBY_SOURCE_DIR,
                           .name = "test",
                           .embedderFile = "CMakeLists.txt",
                           .embedderIdentifier = "test-embedder",
                           .realFaceFile = "CMakeLists.txt",
                           .sums = sums,
                           .isPublished = arePublished}};
    }

    [[nodiscard]] SelfCheck::Services selfCheckServices() {
        return {.words = *words,
                .mainThread = mainThread,
                .clock = mainThread,
                .queues = queues,
                .lockState = lockState,
                .sessionInWords = [this] { return sessionInWords; },
                .spaceKeys = spaceKeys,
                .keyEvents = keyEvents,
                .camera = enrollmentCamera,
                .imaging = imaging,
                .models = models,
                .pack = resources().models,
                .preparingAdvice = "Prepare them.",
                .trialKeyStore = keyStore,
                .cipher = cipher,
                .ownerCheck = owner,
                .windowServer = windowServer,
                .sessionUnlocking = desktop};
    }

    void settle() {
        queues.runAll();
        mainThread.runPosted();
    }

    /// One picture of a head that points this way, a tenth of a second later.
    void see(float yaw, float pitch) {
        mainThread.advance(TimeInterval(0.1));
        vision.removeFaces();
        vision.addFace({0.3, 0.25, 0.35, 0.45}, {320, 240});
        vision.faces.front().yaw = yaw;
        vision.faces.front().pitch = pitch;
        enrollmentCamera->deliver(std::make_shared<FakeSourceImage>(320, 240));
        settle();
    }

    /// Holds the head in one pose for as long as that takes at most.
    void hold(EnrollmentPose pose) {
        static constexpr std::pair<float, float> angles[] = {
            {0.F, 0.F},    {0.35F, 0.F},   {0.35F, -0.25F}, {0.F, -0.25F}, {-0.35F, -0.25F},
            {-0.35F, 0.F}, {-0.35F, 0.3F}, {0.F, 0.25F},    {0.35F, 0.3F}};
        const auto& [yaw, pitch] = angles[static_cast<std::size_t>(pose)];
        const int frames = pose == EnrollmentPose::center ? 28 : 13;
        for (int i = 0; i < frames; ++i)
            see(yaw, pitch);
    }
    void holdAllPoses() {
        for (int pose = 0; pose < 9; ++pose)
            hold(static_cast<EnrollmentPose>(pose));
    }

    /// Of the models that are there.
    ModelSums sums{{"embedder", "e"}, {"realFace", "r"}};
    bool arePublished = false;

    const PlatformWords* words = &macWords;
    FakeMainThread mainThread;
    FakeWorkQueues queues;
    FakeLockEvents lockEvents;
    FakeLockState lockState;
    FakeInputIdle inputIdle{mainThread};
    FakeSpaceKeys spaceKeys;
    std::shared_ptr<FakeCaptureSession> scanCamera = std::make_shared<FakeCaptureSession>();
    std::shared_ptr<FakeCaptureSession> enrollmentCamera = std::make_shared<FakeCaptureSession>();
    FakeFaceVision vision;
    FakeNeuralModels models;
    FakeImaging imaging;
    FakeFourierTransform fourier;
    OpenSslCipher cipher;
    FakeFileSystem files;
    /// What the application keeps its data and its settings in.
    FileSystem* disk = &files;
    FakeKeyStore keyStore;
    FakeOwnerCheck owner;
    FakePasswordVerifier passwordVerifier;
    FakeDefaultsStore defaults;
    DefaultsStore* store = &defaults;
    FakeKeyEvents keyEvents;
    FakeSystemSettings systemSettings;
    FakeWindowServer windowServer;
    FakeProcessActivities activities;
    /// Where it can be asked.
    FakeSessionUnlocking* desktop = nullptr;
    FakeDesktopNotices notices;
    FakeStatusItem statusItem;
    std::optional<std::string> sessionInWords = "it is there";
};

}  // namespace marrowby
