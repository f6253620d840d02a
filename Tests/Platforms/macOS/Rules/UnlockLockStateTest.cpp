// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/WindowServerLockState.h"
#include "Tests/Platforms/macOS/Rules/FakeLoginSession.h"

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
        {"no lock flag", SessionDictionary{{console, true}}, false, true},
        {"a lock flag that is text", SessionDictionary{{locked, std::string("true")}}, false, {}},
        {"unlocked", SessionDictionary{{locked, false}, {console, true}}, false, true},
        {"locked, console flag is a number", SessionDictionary{{locked, true}, {console, 0.0}},
         true, std::nullopt},
        {"locked on the console", SessionDictionary{{locked, true}, {console, true}}, true, true},
        {"locked elsewhere", SessionDictionary{{locked, true}, {console, false}}, false, false},
    };
    FakeLoginSession session;
    const WindowServerLockState lock(session);
    for (const auto& [what, dictionary, isLocked, isOnConsole] : cases) {
        session.setDictionary(dictionary);
        EXPECT_EQ(lock.isLocked(), isLocked) << what;
        EXPECT_EQ(lock.state().isOnConsole, isOnConsole) << what;
    }
}

TEST(UnlockLockState, describesBooleansOnly) {
    EXPECT_EQ(UnlockLockState::inWords(std::nullopt), std::nullopt);
    EXPECT_EQ(
        UnlockLockState::inWords(SessionDictionary{{sessionkey::onConsole, true},
                                                   {"kCGSSessionUserIDKey", std::int64_t{501}},
                                                   {"kCGSSessionUserNameKey", "anna"}}),
        "kCGSSessionOnConsoleKey is true, kCGSSessionUserIDKey is a whole number, "
        "kCGSSessionUserNameKey is a text");
}

}  // namespace
}  // namespace marrowby
