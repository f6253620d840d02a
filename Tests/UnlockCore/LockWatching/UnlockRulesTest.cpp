#include "UnlockCore/LockWatching/UnlockGate.h"
#include "UnlockCore/LockWatching/UnlockLockState.h"
#include "UnlockCore/LockWatching/UnlockTriggerPolicy.h"

#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(UnlockGate, theFirstUnmetConditionRefuses) {
    const std::pair<bool UnlockConditions::*, const char*> rows[] = {
        {&UnlockConditions::isEnabled, "off"},
        {&UnlockConditions::vaultUnlocked, "vaultLocked"},
        {&UnlockConditions::passwordSaved, "noPassword"},
        {&UnlockConditions::passwordTrusted, "passwordRejected"},
        {&UnlockConditions::screenLocked, "notLocked"},
        {&UnlockConditions::accessibilityTrusted, "noAccessibility"},
        {&UnlockConditions::faceMatched, "noMatch"},
        {&UnlockConditions::livenessConfirmed, "notLive"},
    };
    // From nothing met, meeting one after the other; each alone unmet gives the same refusal.
    UnlockConditions growing;
    for (const auto& [condition, refusal] : rows) {
        UnlockConditions lacking{true, true, true, true, true, true, true, true};
        lacking.*condition = false;
        for (const UnlockConditions& conditions : {growing, lacking}) {
            const auto decision = UnlockGate::decide(conditions);
            const auto* refuse = std::get_if<UnlockGate::Decision::Refuse>(&decision);
            ASSERT_NE(refuse, nullptr) << refusal;
            EXPECT_EQ(rawValue(refuse->refusal), refusal);
        }
        growing.*condition = true;
    }
    EXPECT_EQ(UnlockGate::decide(growing), UnlockGate::Decision(UnlockGate::Decision::Type{}));
}

TEST(UnlockTriggerPolicy, theFenceNeverGoesBack) {
    const Date noon(TimeInterval(43'200));
    const TimeInterval second(1);
    UnlockTriggerPolicy policy;
    policy.lookEnded(noon);
    EXPECT_FALSE(policy.fence) << "not locked";
    policy.screenLocked(noon, true);
    policy.lookEnded(noon + 5 * second);
    policy.lookEnded(noon + 3 * second);
    EXPECT_EQ(policy.fence, noon + 5 * second);
    EXPECT_TRUE(policy.acceptWake(noon + 4 * second));
    EXPECT_EQ(policy.fence, noon + 5 * second);
}

TEST(UnlockLockState, readsTheSessionDictionary) {
    constexpr auto locked = "CGSSessionScreenIsLocked";
    constexpr auto console = "kCGSSessionOnConsoleKey";
    const struct {
        const char* what;
        std::optional<SessionDictionary> session;
        bool isLocked;
        std::optional<bool> isOnConsole;
    } cases[] = {
        {"no session", std::nullopt, false, std::nullopt},
        {"no lock flag", SessionDictionary{{console, true}}, false, true},
        {"a lock flag that is text", SessionDictionary{{locked, std::string("true")}}, false, {}},
        {"unlocked", SessionDictionary{{locked, false}, {console, true}}, false, true},
        {"locked, console flag is a number", SessionDictionary{{locked, true}, {console, 0.0}},
         true, std::nullopt},
        {"locked on the console", SessionDictionary{{locked, true}, {console, true}}, true, true},
        {"locked elsewhere", SessionDictionary{{locked, true}, {console, false}}, false, false},
    };
    for (const auto& [what, session, isLocked, isOnConsole] : cases) {
        EXPECT_EQ(UnlockLockState::isLocked(session), isLocked) << what;
        EXPECT_EQ(UnlockLockState::isOnConsole(session), isOnConsole) << what;
    }
}

}  // namespace
}  // namespace marrowby
