#include "Platforms/Linux/X11LockWatcher.h"
#include "Platforms/Linux/X11LoginSession.h"
#include "Tests/Platforms/Linux/PrivateDisplay.h"
#include "Tests/Platforms/Linux/QtLoop.h"

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const SessionDictionary unlocked{{"CGSSessionScreenIsLocked", false},
                                 {"kCGSSessionOnConsoleKey", true}};
const SessionDictionary locked{{"CGSSessionScreenIsLocked", true},
                               {"kCGSSessionOnConsoleKey", true}};

struct X11LockWatcherTest : testing::Test {
    QtLoop loop;
    std::unique_ptr<PrivateDisplay> display = PrivateDisplay::start();
    std::unique_ptr<X11LoginSession> session;
    std::unique_ptr<X11LockWatcher> watcher;
    std::size_t changes = 0;
    std::vector<std::string> sentences;

    void SetUp() override {
        if (!display) GTEST_SKIP() << noPrivateDisplay;
        session = X11LoginSession::create(display->name()).value();
        watch();
    }

    void watch() {
        watcher = X11LockWatcher::create(
                      display->name(), [this] { ++changes; },
                      [this](const std::string& text) { sentences.push_back(text); })
                      .value();
    }

    /// Runs until the session says so, and all that was posted by then.
    [[nodiscard]] bool becomes(const SessionDictionary& truth) {
        return loop.runUntil([&] { return session->copyCurrentDictionary() == truth; });
    }
    [[nodiscard]] bool hears(std::size_t count) {
        return loop.runUntil([&] { return changes >= count; });
    }
};

TEST_F(X11LockWatcherTest, announcesAWindowThatTakesAndLeavesTheScreen) {
    EXPECT_EQ(session->copyCurrentDictionary(), unlocked);
    {
        const LockerWindow locker(*display, "i3lock");
        locker.map();
        ASSERT_TRUE(hears(1));
        EXPECT_EQ(session->copyCurrentDictionary(), locked);
        locker.unmap();
        ASSERT_TRUE(hears(2));
        EXPECT_EQ(session->copyCurrentDictionary(), unlocked);

        locker.resize(320, 200);
        locker.map();
        const xcb_screen_t& screen = display->connection().screen();
        locker.resize(screen.width_in_pixels, screen.height_in_pixels);
        ASSERT_TRUE(hears(3));
    }
    ASSERT_TRUE(hears(4));
    EXPECT_EQ(session->copyCurrentDictionary(), unlocked);
    EXPECT_EQ(changes, 4U);
}

TEST_F(X11LockWatcherTest, isNotTakenInByOrdinaryWindowsOrByBlanking) {
    const LockerWindow managed(*display, "i3lock", LockerWindow::Management::byWindowManager);
    managed.map();
    const LockerWindow menu(*display, "menu");
    menu.map();
    const LockerWindow saver(*display, "xscreensaver");
    saver.map();
    const XcbConnection& connection = display->connection();
    display->setRootProperty("_SCREENSAVER_STATUS", connection.atom("BLANK"));
    EXPECT_EQ(session->copyCurrentDictionary(), unlocked);

    display->setRootProperty("_SCREENSAVER_STATUS", connection.atom("LOCK"));
    ASSERT_TRUE(hears(1));
    EXPECT_EQ(session->copyCurrentDictionary(), locked);
    display->setRootProperty("_SCREENSAVER_STATUS", 0);
    ASSERT_TRUE(hears(2));
    EXPECT_EQ(changes, 2U);
}

TEST_F(X11LockWatcherTest, saysNothingOfALockItFound) {
    const LockerWindow locker(*display, "i3lock");
    locker.map();
    ASSERT_TRUE(hears(1));
    changes = 0;
    watch();
    locker.unmap();
    ASSERT_TRUE(hears(1));
    EXPECT_EQ(changes, 1U);
}

TEST_F(X11LockWatcherTest, followsARealLocker) {
    auto locker = display->run("i3lock", "-n");
    if (!locker) GTEST_SKIP() << "Skipped: needs i3lock.";
    ASSERT_TRUE(hears(1));
    EXPECT_EQ(session->copyCurrentDictionary(), locked);
    locker.kill();
    ASSERT_TRUE(hears(2));
    EXPECT_TRUE(becomes(unlocked));
    EXPECT_EQ(changes, 2U);
}

TEST_F(X11LockWatcherTest, isOffTheConsoleWhileItsTerminalIs) {
    display->setRootProperty("XFree86_has_VT", 0);
    EXPECT_TRUE(becomes({{"CGSSessionScreenIsLocked", false}, {"kCGSSessionOnConsoleKey", false}}));
    display->setRootProperty("XFree86_has_VT", 1);
    EXPECT_TRUE(becomes(unlocked));
}

TEST_F(X11LockWatcherTest, reportsALostDisplayOnceAndGoesOn) {
    const LockerWindow locker(*display, "i3lock");
    locker.map();
    ASSERT_TRUE(hears(1));
    display->kill();
    ASSERT_TRUE(loop.runUntil([&] { return !sentences.empty(); }));
    EXPECT_EQ(session->copyCurrentDictionary(), std::nullopt);
    loop.runPending();
    EXPECT_THAT(sentences, ElementsAre("The display “" + display->name() + "” is gone."));
    EXPECT_EQ(changes, 1U);
}

TEST(X11LockWatcher, saysWhatIsWrongWithADisplay) {
    const QtLoop loop;
    const auto watcher = X11LockWatcher::create("no such display", {}, {});
    ASSERT_FALSE(watcher);
    EXPECT_EQ(watcher.error(), "The display “no such display” can’t be opened.");
    EXPECT_FALSE(X11LoginSession::create("no such display"));
}

}  // namespace
}  // namespace marrowby
