// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Session/LinuxLockMonitor.h"
#include "Platforms/Linux/Session/LogindWatcher.h"
#include "Platforms/Linux/Session/ScreenSaverWatcher.h"
#include "Tests/Platforms/Linux/MockServices.h"
#include "Tests/Platforms/Linux/QtLoop.h"
#include "Tests/Platforms/Linux/Session/MockLogind.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QVariantMap>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace marrowby {
namespace {

using testing::ElementsAre;

struct SessionWatchingTest : testing::Test {
    QtLoop loop;
    QtMainThread mainThread;
    std::unique_ptr<PrivateBus> bus = startBusForMocks();
    std::optional<LogindWatcher> logind;
    std::optional<ScreenSaverWatcher> savers;
    std::optional<LinuxLockMonitor> lock;
    std::vector<LockEvent> events;
    std::vector<bool> sleepStates;

    void SetUp() override {
        if (!bus) GTEST_SKIP() << noPrivateBus;
        qputenv("XDG_SESSION_ID", "c1");
    }

    void record(LockEvent event) {
        events.push_back(event);
        sleepStates.push_back(lock->isSleeping());
        if (onRecord) onRecord();
    }
    std::function<void()> onRecord;

    void watch() {
        logind.emplace(bus->address(), mainThread);
        savers.emplace(bus->address());
        lock.emplace(*logind, *savers, nullptr, mainThread);
        lock->onEvent = [this](LockEvent event) { record(event); };
        lock->start();
        logind->onChange = savers->onChange = [this] { lock->update(); };
        logind->start();
        savers->start();
        lock->update();
    }

    [[nodiscard]] bool becomes(const LockState& state) {
        return loop.runUntil([&] { return lock->state() == state; });
    }
    [[nodiscard]] bool awaitEvents(std::size_t count) {
        return loop.runUntil([&] { return events.size() >= count; });
    }
};

constexpr LockState unlockedHere{.isScreenLocked = false, .isOnConsole = true};
constexpr LockState lockedHere{.isScreenLocked = true, .isOnConsole = true};
constexpr LockState lockedAway{.isScreenLocked = true, .isOnConsole = false};

TEST_F(SessionWatchingTest, followsTheSessionAndSleepThroughLogind) {
    const MockLogind mock(*bus);
    ASSERT_TRUE(mock.isRunning());
    watch();
    EXPECT_EQ(lock->state(), LockState());
    ASSERT_TRUE(becomes(unlockedHere));

    // A request alone is neither a lock nor an unlock.
    mock.ofSession("Lock");
    mock.prepareForSleep(true);
    ASSERT_TRUE(awaitEvents(1));
    EXPECT_EQ(lock->state(), unlockedHere);
    mock.setSession("LockedHint", true);
    ASSERT_TRUE(awaitEvents(2));
    EXPECT_EQ(lock->state(), lockedHere);
    mock.ofSession("Unlock");
    mock.prepareForSleep(false);
    ASSERT_TRUE(awaitEvents(3));
    EXPECT_EQ(lock->state(), lockedHere);

    mock.setSession("Active", false);
    ASSERT_TRUE(awaitEvents(4));
    EXPECT_EQ(lock->state(), lockedAway);
    mock.setSession("Active", true);
    mock.setSession("IdleHint", true);
    mock.setSession("LockedHint", false);
    ASSERT_TRUE(awaitEvents(6));
    EXPECT_EQ(lock->state(), unlockedHere);
    EXPECT_THAT(events,
                ElementsAre(LockEvent::willSleep, LockEvent::screenLocked, LockEvent::wake,
                            LockEvent::willSleep, LockEvent::wake, LockEvent::screenUnlocked));
    EXPECT_THAT(sleepStates, ElementsAre(true, true, false, true, false, false));
}

TEST_F(SessionWatchingTest, delaysSleepUntilItsHandlersRan) {
    const MockLogind mock(*bus);
    ASSERT_TRUE(mock.isRunning());
    watch();
    ASSERT_TRUE(loop.runUntil([&] { return mock.inhibitorCount() == 1; }));

    std::optional<std::size_t> countInHandler;
    onRecord = [&] {
        if (!countInHandler) countInHandler = mock.inhibitorCount();
    };
    mock.prepareForSleep(true);
    ASSERT_TRUE(loop.runUntil([&] { return countInHandler.has_value(); }));
    EXPECT_EQ(countInHandler, 1);
    EXPECT_TRUE(loop.runUntil([&] { return mock.inhibitorCount() == 0; })) << mock.inhibitorCount();
    mock.prepareForSleep(false);
    EXPECT_TRUE(loop.runUntil([&] { return mock.inhibitorCount() == 1; })) << mock.inhibitorCount();
}

TEST_F(SessionWatchingTest, findsTheSessionByProcessAndByTheUsersDisplay) {
    const MockLogind mock(*bus);
    ASSERT_TRUE(mock.isRunning());
    qunsetenv("XDG_SESSION_ID");
    watch();
    // This logind has reported neither yet.
    mock.announceSession();
    ASSERT_TRUE(loop.runUntil([&] { return mock.inhibitorCount() == 1; }));
    EXPECT_EQ(lock->state(), LockState());

    mock.setAnswer("GetUser", "u", "ret = f'/org/freedesktop/login1/user/{args[0]}'");
    const auto userPath = "/org/freedesktop/login1/user/" + std::to_string(getuid());
    mock.setAnswer("GetSessionByPID", "u",
                   "ret = '/org/freedesktop/login1/session/c1' if args[0] == 0 else 1 / 0");
    mock.announceSession();
    EXPECT_TRUE(becomes(unlockedHere));

    logind.emplace(bus->address(), mainThread);
    EXPECT_EQ(lock->state(), LockState());
    mock.setAnswer("GetSessionByPID", "u", "1 / 0");
    // The mock cannot set a struct property, but can run code.
    const char* show =
        "user = self.props['org.freedesktop.login1.User']\n"
        "path = dbus.ObjectPath('/org/freedesktop/login1/session/c1')\n"
        "user['Display'] = dbus.Struct(('c1', path), signature='so')";
    bus->call(logindName, QString::fromStdString(userPath), mockInterface, "AddMethod",
              {mockInterface, "Show", "", "", show});
    bus->call(logindName, QString::fromStdString(userPath), mockInterface, "Show");
    logind->start();
    EXPECT_TRUE(becomes(unlockedHere));
}

TEST_F(SessionWatchingTest, followsScreenSaversThatComeAndGo) {
    watch();
    const char* name = "org.gnome.ScreenSaver";
    const char* path = "/org/gnome/ScreenSaver";
    auto gnome = startMock(*bus, name, {"--session", "--template", "gnome_screensaver"});
    ASSERT_TRUE(gnome);
    const LockState unlocked{.isScreenLocked = false, .isOnConsole = {}};
    const LockState locked{.isScreenLocked = true, .isOnConsole = {}};
    ASSERT_TRUE(becomes(unlocked));
    for (const bool isActive : {true, false, true}) {
        bus->call(name, path, name, "SetActive", {isActive});
        ASSERT_TRUE(becomes(isActive ? locked : unlocked));
    }
    gnome.reset();
    ASSERT_TRUE(becomes({}));

    ASSERT_TRUE(awaitEvents(5));
    EXPECT_THAT(events,
                ElementsAre(LockEvent::screenLocked, LockEvent::screenUnlocked, LockEvent::wake,
                            LockEvent::screenLocked, LockEvent::screenUnlocked));

    // Savers that are already active when they are found.
    for (const auto& [service, place] :
         {std::pair("org.freedesktop.ScreenSaver", "/ScreenSaver"),
          std::pair("org.mate.ScreenSaver", "/org/mate/ScreenSaver"),
          std::pair("org.cinnamon.ScreenSaver", "/org/cinnamon/ScreenSaver"),
          std::pair("org.xfce.ScreenSaver", "/org/xfce/ScreenSaver")}) {
        const auto other = startMock(*bus, service, {"--session", service, place, service});
        ASSERT_TRUE(other) << service;
        bus->call(service, place, mockInterface, "AddMethod",
                  {service, "GetActive", "", "b", "ret = True"});
        savers.emplace(bus->address());
        savers->onChange = [this] { lock->update(); };
        savers->start();
        EXPECT_TRUE(becomes(locked)) << service;
    }
}

TEST_F(SessionWatchingTest, tellsWhileTheSessionBusIsGone) {
    watch();
    Phrase told;
    savers->onBusLost = [&] { told = lock->problem(); };
    EXPECT_TRUE(lock->problem().empty());
    bus->kill();
    ASSERT_TRUE(loop.runUntil([&] { return !told.empty(); }));
    ASSERT_TRUE(bus->startDaemon());
    EXPECT_TRUE(loop.runUntil([&] { return lock->problem().empty(); }));
}

}  // namespace
}  // namespace marrowby
