// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/ThreadWorkQueues.h"
#include "Tests/Fakes/FakeKeyEvents.h"
#include "Tests/Fakes/FakeWorkQueues.h"
#include "Tests/Fakes/VaultFixture.h"
#include "Unlock/macOS/MacWords.h"
#include "UnlockCore/LockScreenServices/StoredPasswordTyper.h"

#include <atomic>
#include <future>
#include <memory>
#include <string>
#include <thread>
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

    VaultFixture bench_;
    CredentialStore credentials_{bench_.passwordFile, *bench_.vault};
    FakeKeyEvents keyEvents_;
    FakeWorkQueues queues_;
    StoredPasswordTyper typer_{credentials_,      keyEvents_,        queues_,
                               bench_.mainThread, bench_.mainThread, macWords};
};

TEST_F(StoredPasswordTyperTest, tellsEveryWayItEnds) {
    EXPECT_EQ(type(), Outcomes{inEnglish(description(CredentialError::none))});
    savePassword("secret");
    bench_.vault->lock();
    EXPECT_EQ(type(), Outcomes{description(VaultError::locked, macWords)});
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

/// A keyboard so slow that whatever the test does happens in the middle of the typing.
class SlowKeyEvents final : public KeyEvents {
  public:
    /// The text is about to be typed; the typist waits for the other.
    std::promise<void> inTheMiddle;
    std::promise<void> goOn;
    std::atomic<bool> hasPressedReturn = false;
    std::atomic<bool> isGivenBack = false;

    [[nodiscard]] bool isTrusted() const override { return true; }
    [[nodiscard]] FieldClearing clearing() const override {
        return FieldClearing::toTheEndThenBack;
    }
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> /*text*/, std::span<const EditingKey> /*keys*/) override {
        return std::make_unique<Source>(*this);
    }
    void pause(TimeInterval /*duration*/) override {}

  private:
    class Source final : public KeyEventSource {
      public:
        explicit Source(SlowKeyEvents& owner) : owner_(owner) {}
        Source(const Source&) = delete;
        Source& operator=(const Source&) = delete;
        ~Source() override { owner_.isGivenBack = true; }
        [[nodiscard]] bool post(const KeyPress& press) override {
            if (press.key == EditingKey::enter) owner_.hasPressedReturn = true;
            return true;
        }
        [[nodiscard]] bool postText(std::span<const char16_t> /*units*/, bool down) override {
            if (!down) return true;
            owner_.inTheMiddle.set_value();
            owner_.goOn.get_future().wait();
            return true;
        }
        [[nodiscard]] bool isUndisturbed() override { return true; }
        /// As long as it takes, for a reader that never catches up.
        void settle(const std::function<bool()>& stillLocked) override {
            while (stillLocked())
                std::this_thread::yield();
        }

      private:
        SlowKeyEvents& owner_;
    };
};

TEST_F(StoredPasswordTyperTest, stopsInTheMiddleWhoeverEndsIt) {
    const struct {
        const char* what;
        std::function<void(StoredPasswordTyper&)> end;
    } cases[] = {
        {"the vault is locked", [this](auto& /*typer*/) { bench_.vault->lock(); }},
        {"it is stopped", [](auto& typer) { typer.stop(); }},
    };
    for (const auto& [what, end] : cases) {
        SCOPED_TRACE(what);
        savePassword("secret");
        bool isStopped = false;
        SlowKeyEvents keys;
        ThreadWorkQueues queues;
        StoredPasswordTyper typer(credentials_, keys, queues, bench_.mainThread, bench_.mainThread,
                                  macWords);
        typer.typeStoredPassword([] { return true; },
                                 [&](const auto& outcome) {
                                     isStopped =
                                         std::holds_alternative<TypingOutcome::Stopped>(outcome);
                                 });
        keys.inTheMiddle.get_future().wait();
        end(typer);
        keys.goOn.set_value();
        while (!isStopped)
            bench_.mainThread.runPosted();
        EXPECT_FALSE(keys.hasPressedReturn);
    }
}

TEST_F(StoredPasswordTyperTest, wakesTheFieldOnlyWhereItMayType) {
    savePassword("secret");
    const auto wakes = [this](const auto& change) {
        keyEvents_.events.clear();
        typer_.expectTyping(keyEvents_.stillLocked());
        change();
        queues_.runAll();
        return keyEvents_.all<Note>() == std::vector{Note::fieldWoken};
    };
    EXPECT_TRUE(wakes([] {}));
    EXPECT_FALSE(wakes([this] { typer_.stop(); }));
    EXPECT_FALSE(wakes([this] { keyEvents_.trusted = false; }));
    keyEvents_.trusted = true;
    EXPECT_FALSE(wakes([this] { keyEvents_.checksUntilUnlocked = 0; }));
    keyEvents_.checksUntilUnlocked.reset();
    EXPECT_FALSE(wakes([this] { bench_.vault->lock(); }));
}

TEST_F(StoredPasswordTyperTest, beginsNothingThatWasStoppedBefore) {
    savePassword("secret");
    typer_.typeStoredPassword(keyEvents_.stillLocked(), [](const auto& /*outcome*/) {});
    typer_.stop();
    queues_.runAll();
    EXPECT_TRUE(keyEvents_.events.empty());
    EXPECT_EQ(type(), Outcomes{"typed"});
}

TEST_F(StoredPasswordTyperTest, leavesNoTypingBehindThatUsesWhatIsGone) {
    savePassword("secret");
    // Under way, at any point.
    for (int i = 0; i < 50; ++i) {
        ThreadWorkQueues queues;
        auto keys = std::make_unique<SlowKeyEvents>();
        auto credentials = std::make_unique<CredentialStore>(bench_.passwordFile, *bench_.vault);
        auto typer = std::make_unique<StoredPasswordTyper>(
            *credentials, *keys, queues, bench_.mainThread, bench_.mainThread, macWords);
        typer->typeStoredPassword([] { return true; }, [](const auto& /*outcome*/) {});
        keys->inTheMiddle.get_future().wait();
        keys->goOn.set_value();
        typer.reset();
        EXPECT_TRUE(keys->isGivenBack);
        keys.reset();
        credentials.reset();
    }
    // Not begun.
    auto keys = std::make_unique<SlowKeyEvents>();
    auto typer = std::make_unique<StoredPasswordTyper>(
        credentials_, *keys, queues_, bench_.mainThread, bench_.mainThread, macWords);
    typer->typeStoredPassword([] { return true; }, [](const auto& /*outcome*/) {});
    typer.reset();
    keys.reset();
    queues_.runAll();
    bench_.mainThread.runPosted();
}

}  // namespace
}  // namespace marrowby
