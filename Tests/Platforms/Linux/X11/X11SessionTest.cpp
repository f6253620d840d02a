// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11LockState.h"
#include "Platforms/Linux/X11/X11LockWatcher.h"
#include "Platforms/Linux/X11/X11SpaceKeys.h"
#include "Tests/Platforms/Linux/PrivateDisplay.h"
#include "Tests/Platforms/Linux/QtLoop.h"

#include <memory>

#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace marrowby {
namespace {

constexpr LockState unlockedHere{.isScreenLocked = false, .isOnConsole = true};
constexpr LockState lockedHere{.isScreenLocked = true, .isOnConsole = true};

/// Cases that no real locker produces on demand.
struct X11SessionTest : testing::Test {
    QtLoop loop;
    std::unique_ptr<PrivateDisplay> display = PrivateDisplay::start();
    std::unique_ptr<X11LockState> lock;
    std::unique_ptr<X11LockWatcher> watcher;
    std::unique_ptr<X11SpaceKeys> keys;
    std::size_t changes = 0;
    int spaces = 0;

    void SetUp() override {
        if (!display) GTEST_SKIP() << noPrivateDisplay;
        lock = X11LockState::create(display->name()).value();
        watcher = X11LockWatcher::create(
                      display->name(), [this] { ++changes; }, [](const auto&) {})
                      .value();
        keys = X11SpaceKeys::create(display->name()).value();
    }

    [[nodiscard]] std::unique_ptr<SpaceKeys::Listening> listen() {
        return keys->listen([this](const auto&) { ++spaces; });
    }
    [[nodiscard]] bool awaitChanges(std::size_t count) {
        return loop.runUntil([&] { return changes >= count; });
    }
};

TEST_F(X11SessionTest, reportsOnlyLockersThatCoverOrLeaveTheScreen) {
    const LockerWindow managed(*display, "i3lock", LockerWindow::Management::byWindowManager);
    managed.map();
    const LockerWindow saver(*display, "xscreensaver");
    saver.map();
    display->setRootProperty("_SCREENSAVER_STATUS", display->connection().atom("BLANK"));
    EXPECT_EQ(lock->state(), unlockedHere);
    {
        const LockerWindow locker(*display, "i3lock");
        locker.map();
        ASSERT_TRUE(awaitChanges(1));
        EXPECT_EQ(lock->state(), lockedHere);
        locker.unmap();
        ASSERT_TRUE(awaitChanges(2));
        EXPECT_EQ(lock->state(), unlockedHere);

        locker.resize(320, 200);
        locker.map();
        const xcb_screen_t& screen = display->connection().screen();
        locker.resize(screen.width_in_pixels, screen.height_in_pixels);
        ASSERT_TRUE(awaitChanges(3));
    }
    ASSERT_TRUE(awaitChanges(4));
    EXPECT_EQ(lock->state(), unlockedHere);
    EXPECT_EQ(changes, 4U);
}

TEST_F(X11SessionTest, isOffTheConsoleWhileItsTerminalIs) {
    for (const bool isOnConsole : {false, true}) {
        display->setRootProperty("XFree86_has_VT", isOnConsole ? 1 : 0);
        EXPECT_TRUE(loop.runUntil([&] { return lock->state() == LockState{false, isOnConsole}; }));
    }
}

TEST_F(X11SessionTest, followsTheSpaceKeyThroughLayoutChanges) {
    const auto listening = listen();
    ASSERT_TRUE(listening);
    constexpr std::uint8_t unusedKeycode = 200;
    display->mapKey(unusedKeycode, XKB_KEY_space);
    display->mapKey(65, XKB_KEY_x);
    // The first key may arrive before the new layout is read.
    ASSERT_TRUE(loop.runUntil([&] {
        display->tap(XKB_KEY_space);
        return spaces > 0;
    }));
}

TEST_F(X11SessionTest, mayStopListeningInItsCallback) {
    std::unique_ptr<SpaceKeys::Listening> brief;
    int calls = 0;
    brief = keys->listen([&](const auto&) {
        ++calls;
        brief.reset();
    });
    const auto listening = listen();
    ASSERT_TRUE(brief && listening);
    display->tap(XKB_KEY_space);
    display->tap(XKB_KEY_space);
    ASSERT_TRUE(loop.runUntil([&] { return spaces >= 2; }));
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace marrowby
