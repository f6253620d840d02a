#include "Tests/Fakes/FakeKeyEvents.h"
#include "Tests/Fakes/VaultBench.h"
#include "UnlockCore/LockScreenServices/StoredPasswordTyper.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Note = FakeKeyEvents::Note;

/// Keeps the background work until the test runs it.
class HeldQueues final : public WorkQueues {
  public:
    struct Queue final : WorkQueue {
        std::vector<std::function<void()>> works;
        void async(std::function<void()> work) override { works.push_back(std::move(work)); }
    };
    [[nodiscard]] std::shared_ptr<WorkQueue> serial(std::string /*label*/) override {
        return std::make_shared<Queue>();
    }
    [[nodiscard]] std::shared_ptr<WorkQueue> background() override { return queue; }

    std::shared_ptr<Queue> queue = std::make_shared<Queue>();
};

struct Spell {
    std::string operator()(const TypingOutcome::Failed& failed) const { return failed.message; }
    std::string operator()(const TypingOutcome::Typed& /*typed*/) const { return "typed"; }
    std::string operator()(const TypingOutcome::Stopped& /*stopped*/) const { return "stopped"; }
};

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
            outcomes.push_back(std::visit(Spell{}, outcome));
        });
        EXPECT_TRUE(keyEvents_.events.empty()) << "typed on the main thread";
        for (const auto& work : queues_.queue->works)
            work();
        queues_.queue->works.clear();
        EXPECT_TRUE(outcomes.empty()) << "reported off the main thread";
        bench_.mainThread.runPosted();
        return outcomes;
    }

    VaultBench bench_;
    CredentialStore credentials_{bench_.passwordFile, *bench_.vault};
    FakeKeyEvents keyEvents_;
    HeldQueues queues_;
    StoredPasswordTyper typer_{credentials_, keyEvents_, queues_, bench_.mainThread};
};

TEST_F(StoredPasswordTyperTest, typesTheSavedPasswordAndGivesTheKeyboardBack) {
    savePassword("sécret");
    EXPECT_EQ(type(), Outcomes{"typed"});
    const auto texts = keyEvents_.all<FakeKeyEvents::Text>();
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0].units, u"sécret");
    EXPECT_EQ(keyEvents_.all<Note>().back(), Note::sourceGone);
}

TEST_F(StoredPasswordTyperTest, tellsEveryWayItEnds) {
    EXPECT_EQ(type(), Outcomes{std::string(description(CredentialError::none))});
    savePassword("secret");
    bench_.vault->lock();
    EXPECT_EQ(type(), Outcomes{std::string(description(VaultError::locked))});
    savePassword("\xFF\xFE");
    EXPECT_EQ(type(), Outcomes{"The saved password isn’t valid text."});
    savePassword("secret");
    keyEvents_.trusted = false;
    EXPECT_EQ(type(), Outcomes{"Marrowby Unlock needs Accessibility to type your password at the "
                               "lock screen."});
    keyEvents_.trusted = true;
    keyEvents_.hasNoSource = true;
    EXPECT_EQ(type(), Outcomes{"Couldn’t make a key press."});
    keyEvents_.hasNoSource = false;
    keyEvents_.checksUntilUnlocked = 1;
    EXPECT_EQ(type(), Outcomes{"stopped"});
}

TEST_F(StoredPasswordTyperTest, reportsBeforeTheKeyboardGoesBack) {
    savePassword("secret");
    bool hasReported = false;
    keyEvents_.onSettle = [&] {
        bench_.mainThread.runPosted();
        EXPECT_TRUE(hasReported);
    };
    typer_.typeStoredPassword(keyEvents_.stillLocked(),
                              [&](const TypingOutcome&) { hasReported = true; });
    ASSERT_EQ(queues_.queue->works.size(), 1U);
    queues_.queue->works[0]();
    EXPECT_EQ(keyEvents_.all<Note>().back(), Note::sourceGone);
}

}  // namespace
}  // namespace marrowby
