#include "Tests/Fakes/FakeKeyEvents.h"
#include "Tests/Fakes/FakeWorkQueues.h"
#include "Tests/Fakes/VaultBench.h"
#include "UnlockCore/LockScreenServices/StoredPasswordTyper.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Note = FakeKeyEvents::Note;

using Outcomes = std::vector<std::string>;

class StoredPasswordTyperTest : public testing::Test {
  protected:
    void savePassword(std::string_view text) {
        ASSERT_TRUE(bench_.unlock());
        auto password = SecretBytes::copyOf(bytesOf(text));
        ASSERT_TRUE(password);
        ASSERT_TRUE(credentials_.save(*password));
    }

    /// Every outcome that one typing reports.
    Outcomes type() {
        Outcomes outcomes;
        typer_.typeStoredPassword(keyEvents_.stillLocked(), [&](const TypingOutcome& outcome) {
            EXPECT_TRUE(bench_.mainThread.isCurrent());
            const auto* failed = std::get_if<TypingOutcome::Failed>(&outcome);
            const bool isTyped = std::holds_alternative<TypingOutcome::Typed>(outcome);
            outcomes.push_back(failed ? failed->message : isTyped ? "typed" : "stopped");
        });
        EXPECT_TRUE(keyEvents_.events.empty()) << "typed on the main thread";
        queues_.runAll();
        EXPECT_TRUE(outcomes.empty()) << "reported off the main thread";
        bench_.mainThread.runPosted();
        return outcomes;
    }

    VaultBench bench_;
    CredentialStore credentials_{bench_.passwordFile, *bench_.vault};
    FakeKeyEvents keyEvents_;
    FakeWorkQueues queues_;
    StoredPasswordTyper typer_{credentials_, keyEvents_, queues_, bench_.mainThread};
};

TEST_F(StoredPasswordTyperTest, tellsEveryWayItEnds) {
    EXPECT_EQ(type(), Outcomes{std::string(description(CredentialError::none))});
    savePassword("secret");
    bench_.vault->lock();
    EXPECT_EQ(type(), Outcomes{std::string(description(VaultError::locked))});
    savePassword("\xFF\xFE");
    EXPECT_EQ(type(), Outcomes{"The saved password isn’t valid text."});
    savePassword("secret");
    EXPECT_EQ(type(), Outcomes{"typed"});
    keyEvents_.events.clear();
    keyEvents_.checksUntilUnlocked = 1;
    EXPECT_EQ(type(), Outcomes{"stopped"});
}

TEST_F(StoredPasswordTyperTest, reportsBeforeTheKeyboardGoesBack) {
    savePassword("sécret");
    bool hasReported = false;
    keyEvents_.onSettle = [&] {
        bench_.mainThread.runPosted();
        EXPECT_TRUE(hasReported);
    };
    typer_.typeStoredPassword(keyEvents_.stillLocked(),
                              [&](const TypingOutcome&) { hasReported = true; });
    queues_.runAll();
    EXPECT_EQ(keyEvents_.all<FakeKeyEvents::Text>().at(0).units, u"sécret");
    EXPECT_EQ(keyEvents_.all<Note>().back(), Note::sourceGone);
}

}  // namespace
}  // namespace marrowby
