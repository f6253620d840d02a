// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Desktop/ThreadWorkQueues.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/Session/DesktopSession.h"
#include "Platforms/Linux/X11/XTestKeyEvents.h"
#include "Simulation/Desktop/DesktopUser.h"
#include "Simulation/Desktop/PrivateDesktop.h"
#include "Simulation/Desktop/ScreenLocker.h"
#include "Tests/Platforms/Linux/QtLoop.h"
#include "UnlockCore/LockWatching/LockScreenActivityMonitor.h"
#include "UnlockCore/LockWatching/OwnKeystrokes.h"
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"

#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace marrowby {
namespace {

using testing::ElementsAre;

constexpr std::string_view password = "opens a door";

/// The application's lock watching with a real display, locker and user.
struct LockWatching : testing::TestWithParam<ScreenLocker::Kind> {
    QtLoop loop;
    QtMainThread mainThread;
    UnixSystemClock clock;
    std::unique_ptr<PrivateDesktop> desktop;
    std::unique_ptr<ScreenLocker> locker;
    std::unique_ptr<DesktopSession> session;
    std::optional<DesktopUser> somebody;
    std::unique_ptr<XTestKeyEvents> user;
    std::unique_ptr<OwnKeystrokes> own;
    std::unique_ptr<TrackedKeyEvents> keyEvents;
    std::unique_ptr<ForeignInputIdle> foreignIdle;
    std::unique_ptr<LockScreenActivityMonitor> activity;
    std::unique_ptr<SpaceKeyMonitor> spaceKeys;
    std::vector<LockEvent> lockEvents;
    int activities = 0;
    int spaces = 0;
    ThreadWorkQueues queues;

    void SetUp() override {
        auto created = PrivateDesktop::create();
        if (!created) GTEST_SKIP() << "Skipped: " << created.error();
        desktop = std::make_unique<PrivateDesktop>(std::move(*created));
        locker = std::make_unique<ScreenLocker>(desktop->displayName(), GetParam());
        session = std::make_unique<DesktopSession>(
            DesktopSession::Places{
                .systemBus = {}, .sessionBus = {}, .display = desktop->displayName()},
            mainThread);
        session->lockEvents().onEvent = [this](LockEvent event) { lockEvents.push_back(event); };
        session->lockEvents().start();
        session->start();
        somebody.emplace(std::move(*DesktopUser::create(desktop->displayName())));
        user = std::make_unique<XTestKeyEvents>(desktop->displayName());
        own = std::make_unique<OwnKeystrokes>(session->inputIdle());
        keyEvents = std::make_unique<TrackedKeyEvents>(*user, *own);
        foreignIdle = std::make_unique<ForeignInputIdle>(session->inputIdle(), *own);
        activity = std::make_unique<LockScreenActivityMonitor>(*foreignIdle, mainThread, clock);
        activity->onActivity = [this](const InputActivity&) { ++activities; };
        spaceKeys = std::make_unique<SpaceKeyMonitor>(session->spaceKeys(), *own);
        spaceKeys->onSpace = [this] { ++spaces; };
    }

    [[nodiscard]] bool isLocked() const { return session->lockState().isLocked(); }

    /// A key that somebody else presses.
    void tap(std::uint32_t keysym) const { ASSERT_TRUE(somebody->tap(keysym)); }

    /// As the application does, off the main thread.
    void type(std::string_view text) {
        std::atomic<bool> isDone = false;
        queues.background()->async([&] {
            (void)keystrokeinjector::typePassword(
                *keyEvents, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()},
                [this] { return locker->isRunning(); })
                .outcome();
            isDone = true;
        });
        ASSERT_TRUE(loop.runUntil([&] { return isDone.load(); }));
    }
    void letPass(TimeInterval time) {
        const Date begin = clock.now();
        ASSERT_TRUE(loop.runUntil([&] { return clock.now() - begin > time; }));
    }
};

TEST_P(LockWatching, reportsTheLockTheInputAndTheUnlock) {
    EXPECT_FALSE(isLocked());
    if (const auto locked = locker->lock(password); !locked)
        GTEST_SKIP() << "Skipped: " << locked.error();
    ASSERT_TRUE(loop.runUntil([this] { return !lockEvents.empty(); }));
    EXPECT_THAT(lockEvents, ElementsAre(LockEvent::screenLocked));
    EXPECT_TRUE(isLocked());

    // xscreensaver ignores input in its first seconds.
    letPass(TimeInterval(GetParam() == ScreenLocker::Kind::xscreensaver ? 3 : 0.2));
    activity->start();
    spaceKeys->start();
    ASSERT_TRUE(spaceKeys->isListening());
    tap(XKB_KEY_Shift_L);
    ASSERT_TRUE(loop.runUntil([this] { return activities > 0; }));
    EXPECT_EQ(spaces, 0);
    tap(XKB_KEY_space);
    ASSERT_TRUE(loop.runUntil([this] { return spaces > 0 && activities > 1; }));

    // Our own typing is no activity.
    activities = 0;
    spaces = 0;
    type(password);
    ASSERT_TRUE(loop.runUntil([this] { return lockEvents.size() > 1; }));
    EXPECT_THAT(lockEvents, ElementsAre(LockEvent::screenLocked, LockEvent::screenUnlocked));
    EXPECT_FALSE(isLocked());
    EXPECT_EQ(activities, 0);
    EXPECT_EQ(spaces, 0);
}

TEST_P(LockWatching, treatsACrashedLockerAsAnUnlock) {
    if (const auto locked = locker->lock(password); !locked)
        GTEST_SKIP() << "Skipped: " << locked.error();
    ASSERT_TRUE(loop.runUntil([this] { return !lockEvents.empty(); }));
    locker->kill();
    ASSERT_TRUE(loop.runUntil([this] { return lockEvents.size() > 1; }));
    EXPECT_EQ(lockEvents.back(), LockEvent::screenUnlocked);
    EXPECT_FALSE(isLocked());
}

constexpr std::array names{"i3lock", "i3lockInBackground", "xsecurelock", "xscreensaver"};

INSTANTIATE_TEST_SUITE_P(
    Lockers, LockWatching,
    testing::Values(ScreenLocker::Kind::i3lock, ScreenLocker::Kind::i3lockInBackground,
                    ScreenLocker::Kind::xsecurelock, ScreenLocker::Kind::xscreensaver),
    [](const auto& kind) -> std::string { return names.at(static_cast<std::size_t>(kind.param)); });

}  // namespace
}  // namespace marrowby
