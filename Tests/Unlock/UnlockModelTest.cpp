#include "Platforms/Posix/OpenSslCipher.h"
#include "Tests/Fakes/FakeCaptureSession.h"
#include "Tests/Fakes/FakeDefaultsStore.h"
#include "Tests/Fakes/FakeDirectory.h"
#include "Tests/Fakes/FakeFaceVision.h"
#include "Tests/Fakes/FakeFileSystem.h"
#include "Tests/Fakes/FakeFourierTransform.h"
#include "Tests/Fakes/FakeImaging.h"
#include "Tests/Fakes/FakeInputIdle.h"
#include "Tests/Fakes/FakeKeyEvents.h"
#include "Tests/Fakes/FakeKeyboardDevices.h"
#include "Tests/Fakes/FakeKeychain.h"
#include "Tests/Fakes/FakeLoginSession.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeNeuralModels.h"
#include "Tests/Fakes/FakeNotificationCenter.h"
#include "Tests/Fakes/FakeOwnerAuthentication.h"
#include "Tests/Fakes/FakeWorkQueues.h"
#include "Unlock/UnlockModel.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Outcome = std::expected<void, std::string>;

/// A whole computer of fakes with one application on it.
class UnlockModelTest : public testing::Test {
  protected:
    UnlockModelTest() {
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
        start();
    }

    /// Starts the application, anew where it runs already.
    void start() {
        model.reset();
        model = std::make_unique<UnlockModel>(
            UnlockPlatform{.mainThread = mainThread,
                           .clock = mainThread,
                           .queues = queues,
                           .workspaceCenter = workspaceCenter,
                           .distributedCenter = distributedCenter,
                           .defaultCenter = defaultCenter,
                           .loginSession = loginSession,
                           .inputIdle = inputIdle,
                           .keyboards = keyboards,
                           .lookCamera = lookCamera,
                           .enrollmentCamera = enrollmentCamera,
                           .lookVision = vision,
                           .enrollmentVision = vision,
                           .models = models,
                           .imaging = imaging,
                           .fourier = fourier,
                           .cipher = cipher,
                           .files = files,
                           .keychain = keychain,
                           .ownerAuthentication = owner,
                           .directory = directory,
                           .defaults = defaults,
                           .keyEvents = keyEvents},
            UnlockModel::Resources{.dataBase = "/data",
                                   .bundleIdentifier = {},
                                   .testTag = {},
                                   .userName = "anna",
                                   .models = {.folder = MARROWBY_SOURCE_DIR,
                                              .embedderFile = "CMakeLists.txt",
                                              .embedderIdentifier = "test-embedder",
                                              .realFaceFile = "CMakeLists.txt"}},
            UnlockModel::Callbacks{});
    }

    void settle() {
        queues.runAll();
        mainThread.runPosted();
    }

    Outcome savePassword(std::string_view text) {
        std::optional<Outcome> outcome;
        const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
        model->savePassword(SecretBytes::copyOf(bytes).value(),
                            [&](const Outcome& result) { outcome = result; });
        settle();
        return outcome.value_or(std::unexpected("never completed"));
    }

    Outcome openVault() {
        std::optional<Outcome> outcome;
        model->openVault("look", [&](const Outcome& result) { outcome = result; });
        settle();
        return outcome.value_or(std::unexpected("never completed"));
    }

    FakeMainThread mainThread;
    FakeWorkQueues queues;
    FakeNotificationCenter workspaceCenter;
    FakeNotificationCenter distributedCenter;
    FakeNotificationCenter defaultCenter;
    FakeLoginSession loginSession;
    FakeInputIdle inputIdle{mainThread};
    FakeKeyboardDevices keyboards;
    std::shared_ptr<FakeCaptureSession> lookCamera = std::make_shared<FakeCaptureSession>();
    std::shared_ptr<FakeCaptureSession> enrollmentCamera = std::make_shared<FakeCaptureSession>();
    FakeFaceVision vision;
    FakeNeuralModels models;
    FakeImaging imaging;
    FakeFourierTransform fourier;
    OpenSslCipher cipher;
    FakeFileSystem files;
    FakeKeychain keychain;
    FakeOwnerAuthentication owner;
    FakeDirectory directory;
    FakeDefaultsStore defaults;
    FakeKeyEvents keyEvents;
    std::unique_ptr<UnlockModel> model;
};

TEST_F(UnlockModelTest, savesThePasswordAfterTheOwnerConfirmedAndTrustsItAgain) {
    UnlockSettings settings;
    settings.passwordHealth = {.failures = 2, .suspended = true, .needsNotice = true};
    model->apply(settings);

    EXPECT_TRUE(savePassword("secret"));

    ASSERT_EQ(owner.prompts.size(), 1U);
    EXPECT_EQ(owner.prompts[0].reason, "save your Mac password");
    EXPECT_TRUE(model->hasPassword());
    EXPECT_EQ(model->settings().passwordHealth, PasswordHealth());
    EXPECT_EQ(UnlockSettings::load(defaults).passwordHealth, PasswordHealth());
}

TEST_F(UnlockModelTest, savesNoPasswordThatTheAccountRefusesOrThatCannotBeTyped) {
    const struct {
        const char* password;
        std::optional<DirectoryError> verdict;
        const char* sentence;
    } cases[] = {
        {"secret", DirectoryError{"com.apple.OpenDirectory", 5000, "no"},
         "That isn’t your Mac password."},
        {"secret", DirectoryError{"com.apple.OpenDirectory", 2100, "The node is away."},
         "The password couldn’t be checked, so nothing was saved. The node is away."},
        {"sec\nret",
         {},
         "The password has a line break or another control character in it, which can’t be typed "
         "at "
         "the lock screen."},
    };
    for (const auto& [password, verdict, sentence] : cases) {
        directory.verdict = verdict;
        EXPECT_EQ(savePassword(password), Outcome(std::unexpected(sentence)));
        EXPECT_FALSE(model->hasPassword());
        EXPECT_TRUE(owner.prompts.empty());
    }
    EXPECT_EQ(directory.asked[1], "dsRecTypeStandard:Users anna");
}

TEST_F(UnlockModelTest, savesNothingWhenTheOwnerCancels) {
    owner.answer = std::unexpected(OwnerAuthenticationError{.code = -2, .message = "gone"});

    EXPECT_EQ(savePassword("secret"), Outcome(std::unexpected("Cancelled.")));

    EXPECT_FALSE(model->hasPassword());
    EXPECT_FALSE(model->isVaultUnlocked());
    EXPECT_TRUE(files.files().empty());
}

TEST_F(UnlockModelTest, findsEverythingAgainAfterARestartOnceTheOwnerConfirmed) {
    ASSERT_TRUE(savePassword("secret"));
    start();
    EXPECT_TRUE(model->hasPassword());
    EXPECT_FALSE(model->isVaultUnlocked());
    EXPECT_TRUE(openVault());
    EXPECT_TRUE(model->isVaultUnlocked());
}

TEST_F(UnlockModelTest, leavesADamagedFaceFileAsItIs) {
    ASSERT_TRUE(savePassword("secret"));
    const std::filesystem::path faces = "/data/Marrowby Unlock/Faces.sealed";
    const FakeFileSystem::Bytes damaged(64, 0x01);
    files.put(faces, damaged);
    start();

    const Outcome opened = openVault();

    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error(),
              "Your saved face couldn’t be read, so nothing was changed (writing now would replace "
              "it). Couldn’t decrypt: the saved data may be damaged.");
    EXPECT_EQ(files.content(faces), damaged);
    EXPECT_FALSE(model->isEnrolled());
}

TEST_F(UnlockModelTest, saysWhyAnEnrolmentCannotBegin) {
    struct Case {
        const char* sentence;
        std::function<void()> breakIt;
    };
    const Case cases[] = {
        {"Marrowby Unlock isn’t allowed to use the camera. Turn it on in System Settings › Privacy "
         "& Security › Camera.",
         [this] { enrollmentCamera->answer = CaptureAuthorization::denied; }},
        {"No camera found.",
         [this] {
             enrollmentCamera->answer = CaptureAuthorization::authorized;
             enrollmentCamera->cameras.clear();
         }},
        {"The face model couldn’t be loaded: out of order",
         [this] { models.loadFault = "out of order"; }},
    };
    for (const Case& one : cases) {
        one.breakIt();
        std::optional<Outcome> outcome;
        model->enroll("Anna", [&](const Outcome& result) { outcome = result; });
        settle();
        EXPECT_EQ(outcome, std::optional<Outcome>(std::unexpected(one.sentence)));
        EXPECT_TRUE(owner.prompts.empty());
    }
}

TEST_F(UnlockModelTest, endsAnEnrolmentWithTheReasonOfAFinderThatFails) {
    vision.rectanglesFault = "The finder is out of order.";
    enrollmentCamera->cameras = {{.description = {"desk", "Desk camera"}}};
    std::optional<Outcome> outcome;
    model->enroll("Anna", [&](const Outcome& result) { outcome = result; });
    settle();
    EXPECT_FALSE(outcome);

    enrollmentCamera->deliver(std::make_shared<FakeSourceImage>(640, 480));
    settle();

    ASSERT_TRUE(outcome && !*outcome);
    EXPECT_EQ(outcome->error(), "The finder is out of order.");
    EXPECT_FALSE(model->isEnrolled());
}

}  // namespace
}  // namespace marrowby
