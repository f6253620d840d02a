#include "Tests/Fakes/FakeLoginSession.h"
#include "UnlockCore/LockWatching/UnlockLockState.h"
#include "UnlockCore/LockWatching/WindowServerLockState.h"

#include <cstdint>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

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
        {"empty", SessionDictionary{}, false, std::nullopt},
        {"no lock flag", SessionDictionary{{console, true}}, false, true},
        {"a lock flag that is a number", SessionDictionary{{locked, std::int64_t{1}}}, false, {}},
        {"a lock flag that is text", SessionDictionary{{locked, std::string("true")}}, false, {}},
        {"unlocked", SessionDictionary{{locked, false}, {console, true}}, false, true},
        {"locked, no console flag", SessionDictionary{{locked, true}}, true, std::nullopt},
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

TEST(WindowServerLockState, asksTheSessionEachTime) {
    FakeLoginSession session;
    const WindowServerLockState state(session);
    EXPECT_FALSE(state.isLocked());
    session.setLocked(true);
    EXPECT_TRUE(state.isLocked());
    session.setOnConsole(false);
    EXPECT_FALSE(state.isLocked());
    session.setDictionary(std::nullopt);
    EXPECT_FALSE(state.isLocked());
}

}  // namespace
}  // namespace marrowby
