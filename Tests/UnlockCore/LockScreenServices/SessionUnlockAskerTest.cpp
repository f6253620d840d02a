// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeSessionUnlocking.h"
#include "UnlockCore/LockScreenServices/SessionUnlockAsker.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Outcomes = std::vector<std::string>;

struct SessionUnlockAskerTest : testing::Test {
    void open() {
        asker->typeStoredPassword(
            [this] { return isLocked; },
            [this](const TypingOutcome& outcome) {
                const auto* notAsked = std::get_if<TypingOutcome::NotAsked>(&outcome);
                const bool isAsked = std::holds_alternative<TypingOutcome::Asked>(outcome);
                outcomes.push_back(notAsked
                                       ? inEnglish(notAsked->reason, {{"detail", notAsked->detail}})
                                   : isAsked ? "asked"
                                             : "stopped");
            });
    }
    void advance(double seconds) { mainThread.advance(TimeInterval(seconds)); }

    FakeMainThread mainThread;
    FakeSessionUnlocking session;
    bool isLocked = true;
    bool isWanted = true;
    Outcomes outcomes;
    std::unique_ptr<SessionUnlockAsker> asker =
        std::make_unique<SessionUnlockAsker>(SessionUnlockAsker::Services{
            .session = session, .mainThread = mainThread, .clock = mainThread, .isWanted = [this] {
                return isWanted;
            }});
};

TEST_F(SessionUnlockAskerTest, asksOnceAndSaysHowThatEnded) {
    const std::string silent = "The system doesn’t answer about this session.";
    const struct {
        const char* name;
        std::function<void()> happens;
        const char* outcome;
        int asked;
    } cases[] = {
        {"all is well",
         [&] {
             session.tellFacts();
             session.answer();
         },
         "asked", 1},
        {"logind refuses",
         [&] {
             session.tellFacts();
             session.answer(std::unexpected("Access denied"));
         },
         "The system refused: Access denied", 1},
        {"the answer to the request is lost",
         [&] {
             session.tellFacts();
             advance(3);
         },
         "asked", 1},
        {"nobody answers at all", [&] { advance(3); }, silent.c_str(), 0},
        {"the hint is false when it is read again",
         [&] {
             session.facts.isLocked = false;
             session.tellFacts();
         },
         "The session isn’t locked.", 0},
        {"the lock went meanwhile",
         [&] {
             isLocked = false;
             session.tellFacts();
         },
         "stopped", 0},
        {"the owner took the yes back",
         [&] {
             isWanted = false;
             session.tellFacts();
         },
         "stopped", 0},
        {"everything is erased",
         [&] {
             asker->stop();
             session.tellFacts();
         },
         "stopped", 0},
    };
    const SessionUnlockFacts good = session.facts;
    for (const auto& [name, happens, outcome, asked] : cases) {
        SCOPED_TRACE(name);
        session.facts = good;
        session.asked = 0;
        session.pendingAnswer = {};
        isLocked = isWanted = true;
        outcomes.clear();
        open();
        EXPECT_EQ(outcomes, Outcomes{});
        happens();
        // Late and repeated answers.
        session.facts = good;
        session.tellFacts();
        session.answer();
        advance(10);
        EXPECT_EQ(outcomes, Outcomes{outcome});
        EXPECT_EQ(session.asked, asked);
        EXPECT_TRUE(mainThread.timers().empty());
    }
}

TEST_F(SessionUnlockAskerTest, anAnswerToAnEarlierLookIsNotTakenForThisOne) {
    open();
    const auto early = session.pendingRead;
    open();
    EXPECT_EQ(outcomes, Outcomes{"stopped"});
    early(session.facts);
    EXPECT_EQ(session.asked, 0);
    session.tellFacts();
    session.tellFacts();
    EXPECT_EQ(session.asked, 1);
    asker.reset();
    session.answer();
    advance(10);
    EXPECT_EQ(outcomes, Outcomes{"stopped"});
}

}  // namespace
}  // namespace marrowby
