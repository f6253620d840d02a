// SPDX-License-Identifier: Apache-2.0
#include "Tests/Program/ProgramTest.h"

#include <random>

#include <gmock/gmock.h>
#include <signal.h>

namespace marrowby {
namespace {

using testing::StartsWith;

/// What the program uses goes away while it is used.
class LifetimeTest : public ProgramTest {
  protected:
    void startSetUp() {
        ASSERT_NO_FATAL_FAILURE(start());
        ASSERT_NO_FATAL_FAILURE(setUpThroughTheWindow());
        ASSERT_TRUE(program->order("scene live-normal 4"));
    }
    /// Until the owner is recognised at the locker.
    void comeBack() {
        ASSERT_NO_FATAL_FAILURE(lockScreen());
        ASSERT_TRUE(comesBackUntil([&] { return program->hasLogged(logevent::recognised); }))
            << program->recentWords();
    }
};

TEST_F(LifetimeTest, leavesNoKeyHeldWhenItQuitsWhileTyping) {
    ASSERT_NO_FATAL_FAILURE(startSetUp());
    const auto keyboard = desktop->keyboard();
    std::mt19937 moments(1);
    for (int time = 0; time < 4; ++time) {
        if (time > 0) {
            ASSERT_NO_FATAL_FAILURE(start());
            ASSERT_TRUE(program->order("scene live-normal 4"));
            ASSERT_NO_FATAL_FAILURE(sees("Marrowby Unlock"));
            press(tabKey);
            press(spaceKey);
        }
        ASSERT_NO_FATAL_FAILURE(comeBack());
        // The typing takes some 50 ms.
        const QDeadlineTimer moment(static_cast<int>(moments() % 60));
        ASSERT_TRUE(loop.runUntil([&] { return moment.hasExpired(); }));
        EXPECT_EQ(program->terminate(), EXIT_SUCCESS) << program->recentWords();
        locker->kill();
        EXPECT_EQ(desktop->keyboard(), keyboard);
        ASSERT_NO_FATAL_FAILURE(expectAnUntouchedTerminal());
    }
}

TEST_F(LifetimeTest, unlocksWithoutTheBusAndWithALockedKeyring) {
    ASSERT_NO_FATAL_FAILURE(startSetUp());
    keyring->lock();
    {
        SCOPED_TRACE("keyring locked");
        ASSERT_NO_FATAL_FAILURE(expectThatItUnlocks());
    }
    // The key is out of reach after a restart.
    EXPECT_EQ(program->terminate(), EXIT_SUCCESS) << program->recentWords();
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_NO_FATAL_FAILURE(sees("Marrowby Unlock"));
    press(tabKey);
    press(spaceKey);
    EXPECT_TRUE(loop.runUntil([&] {
        return tell({"status"}).starts_with("1 Keyring can’t be used: ");
    })) << tell({"status"});
    keyring.reset();
    keyring = startKeyring(*bus, home.path(), "login");
    ASSERT_TRUE(keyring);
    press(spaceKey);
    EXPECT_TRUE(loop.runUntil([&] { return tell({"status"}).starts_with("0 Ready: "); }))
        << tell({"status"});

    SCOPED_TRACE("bus gone");
    ASSERT_TRUE(program->order("scene live-normal 4"));
    keyring.reset();
    bus->kill();
    EXPECT_TRUE(program->logs(logevent::sessionAway)) << program->recentWords();
    EXPECT_THAT(tell({"status"}), StartsWith("3 There is no session bus here"));
    ASSERT_NO_FATAL_FAILURE(expectThatItUnlocks());
    ASSERT_TRUE(bus->startDaemon());
    EXPECT_TRUE(loop.runUntil([&] { return tell({"status"}).starts_with("0 Ready: "); }));
    EXPECT_EQ(program->terminate(), EXIT_SUCCESS) << program->recentWords();
    expectAnUntouchedTerminal();
}

}  // namespace
}  // namespace marrowby
