// SPDX-License-Identifier: Apache-2.0
#include "Tests/Unlock/FakeComputer.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

class UnlockModelTest : public testing::Test, protected FakeComputer {
  protected:
    UnlockModelTest() { start(); }

    /// Starts the application, anew where it runs already.
    void start() {
        model.reset();
        model = std::make_unique<UnlockModel>(platform(), resources(), UnlockModel::Callbacks{});
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
        model->openVault([&](const Outcome& result) { outcome = result; });
        settle();
        return outcome.value_or(std::unexpected("never completed"));
    }

    std::unique_ptr<UnlockModel> model;
};

TEST_F(UnlockModelTest, savesNoPasswordThatTheAccountRefusesOrThatCannotBeTyped) {
    const struct {
        const char* password;
        PasswordCheckResult verdict;
        const char* sentence;
    } cases[] = {
        {"secret", PasswordCheckResult::Unavailable{"The node is away."},
         "The password couldn’t be checked, so nothing was saved. The node is away."},
        {"sec\nret", PasswordCheckResult::Correct{},
         "The password has a line break or another control character in it, which can’t be typed "
         "at "
         "the lock screen."},
    };
    for (const auto& [password, verdict, sentence] : cases) {
        passwordVerifier.verdict = verdict;
        EXPECT_EQ(savePassword(password), Outcome(std::unexpected(sentence)));
        EXPECT_FALSE(model->state().hasPassword);
        EXPECT_TRUE(owner.prompts.empty());
    }
}

TEST_F(UnlockModelTest, saysWhatADiskDidNotTake) {
    ASSERT_TRUE(openVault());
    for (const std::size_t call : {0U, 2U, 3U}) {
        files.failFrom(call);
        EXPECT_EQ(savePassword("secret"),
                  Outcome(std::unexpected("Your Mac password wasn’t saved: Input/output error.")));
        EXPECT_FALSE(model->state().hasPassword);
        files.heal();
    }
    EXPECT_TRUE(savePassword("secret"));
    EXPECT_EQ(model->state().problem, std::nullopt);
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
    EXPECT_FALSE(model->state().isEnrolled);
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
        model->captureFace([&](const Outcome& result) { outcome = result; });
        settle();
        EXPECT_EQ(outcome, std::optional<Outcome>(std::unexpected(one.sentence)));
        EXPECT_TRUE(owner.prompts.empty());
    }
}

}  // namespace
}  // namespace marrowby
