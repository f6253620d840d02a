// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/Input/EvdevInputIdle.h"
#include "Platforms/Linux/Input/EvdevSpaceKeys.h"
#include "Platforms/Linux/Session/DesktopSession.h"
#include "Tests/Platforms/Linux/PrivateDisplay.h"
#include "Tests/Platforms/Linux/QtLoop.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"

#include <cmath>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace marrowby {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(DesktopSession, resumesWhenItsDisplayComesBack) {
    QtLoop loop;
    QtMainThread mainThread;
    const auto display = PrivateDisplay::start();
    if (!display) GTEST_SKIP() << noPrivateDisplay;
    display->kill();

    std::vector<LockEvent> heard;
    std::vector<std::string> sentences;
    DesktopSession session({.systemBus = {}, .sessionBus = {}, .display = display->name()},
                           mainThread);
    session.lockEvents().onEvent = [&heard](LockEvent event) { heard.push_back(event); };
    session.lockEvents().start();
    session.onAway = [&](const std::string& text) { sentences.push_back(text); };
    session.start();
    EXPECT_THAT(sentences, ElementsAre("The display “" + display->name() + "” can’t be opened."));
    EXPECT_EQ(session.lockState().state(), LockState());
    EXPECT_EQ(session.inputIdle().sinceLastInput(), std::nullopt);
    EXPECT_FALSE(session.spaceKeys().hasListenAccess());
    EXPECT_FALSE(session.spaceKeys().listen([](const auto&) {}));

    std::unique_ptr<SpaceKeys::Listening> listening;
    int spaces = 0;
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(display->startAgain());
        ASSERT_TRUE(loop.runUntil([&] { return session.spaceKeys().hasListenAccess(); }));
        EXPECT_GE(session.inputIdle().sinceLastInput(), TimeInterval::zero());
        if (!listening) listening = session.spaceKeys().listen([&](const auto&) { ++spaces; });
        spaces = 0;
        ASSERT_TRUE(loop.runUntil([&] {
            display->tap(XKB_KEY_space);
            return spaces > 0;
        }));
        heard.clear();
        const LockerWindow locker(*display, "i3lock");
        locker.map();
        ASSERT_TRUE(loop.runUntil([&] { return !heard.empty(); }));
        display->kill();
        ASSERT_TRUE(loop.runUntil([&] { return heard.size() > 1; }));
        EXPECT_THAT(heard, ElementsAre(LockEvent::screenLocked, LockEvent::screenUnlocked));
        EXPECT_EQ(session.lockState().state(), LockState());
    }
    EXPECT_EQ(sentences.size(), 3U);
}

TEST(DesktopSession, sleepsAndWakesWithItsMonitors) {
    QtLoop loop;
    const auto display = PrivateDisplay::start();
    if (!display) GTEST_SKIP() << noPrivateDisplay;
    QtMainThread mainThread;
    DesktopSession session(
        {.systemBus = {}, .sessionBus = {}, .display = display->name(), .inputDevices = {}},
        mainThread);
    std::vector<LockEvent> heard;
    session.lockEvents().onEvent = [&](LockEvent event) { heard.push_back(event); };
    session.lockEvents().start();
    session.start();
    for (std::size_t round = 1; round < 3; ++round) {
        display->blank();
        ASSERT_TRUE(loop.runUntil([&] { return heard.size() == 2 * round - 1; }));
        EXPECT_TRUE(session.lockEvents().isSleeping());
        display->tap(XKB_KEY_Shift_L);
        ASSERT_TRUE(loop.runUntil([&] { return heard.size() == 2 * round; }));
        EXPECT_FALSE(session.lockEvents().isSleeping());
    }
    EXPECT_THAT(heard, ElementsAre(LockEvent::willSleep, LockEvent::wake, LockEvent::willSleep,
                                   LockEvent::wake));

    // Losing a display while its monitors sleep ends the sleep.
    display->blank();
    ASSERT_TRUE(loop.runUntil([&] { return session.lockEvents().isSleeping(); }));
    display->kill();
    EXPECT_TRUE(loop.runUntil([&] { return !session.lockEvents().isSleeping(); }));
}

/// A folder of fake input devices: pipes that carry real input events.
struct EvdevTest : testing::Test {
    QtLoop loop;
    TemporaryFolder folder;
    std::map<std::string, int> devices;
    /// Whether each press was synthetic.
    std::vector<bool> spaces;

    ~EvdevTest() override {
        for (const auto& [name, descriptor] : devices)
            ::close(descriptor);
    }

    [[nodiscard]] static std::optional<EvdevDevices::Description> describe(
        int /*descriptor*/, const std::filesystem::path& device) {
        const std::string name = device.filename();
        if (name == "event-other") return std::nullopt;
        return EvdevDevices::Description{.isForUsers = name != "event-lid",
                                         .hasSpaceKey = name.starts_with("event-keyboard"),
                                         .isVirtual = name == "event-keyboard-made"};
    }

    void plug(const std::string& name) {
        const std::string path = folder.path() / name;
        ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
        devices[name] = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    }
    void unplug(const std::string& name) {
        std::filesystem::remove(folder.path() / name);
        ::close(devices[name]);
        devices.erase(name);
    }
    void send(const std::string& name, TimeInterval uptime, std::uint16_t type, std::uint16_t code,
              std::int32_t value) {
        input_event event{};
        event.input_event_sec = static_cast<time_t>(uptime.count());
        event.input_event_usec =
            static_cast<suseconds_t>((uptime.count() - std::floor(uptime.count())) * 1e6);
        event.type = type;
        event.code = code;
        event.value = value;
        ASSERT_EQ(::write(devices[name], &event, sizeof event), ssize_t{sizeof event});
    }
    void key(const std::string& name, std::uint16_t code, std::int32_t value) {
        send(name, unixtime::uptime(), EV_KEY, code, value);
    }
    [[nodiscard]] auto listen(EvdevSpaceKeys& to) {
        return to.listen([this](SpaceKeys::Press press) { spaces.push_back(press.isSynthetic); });
    }
};

TEST_F(EvdevTest, measuresTheIdleTimeOfUserInput) {
    const EvdevInputIdle idle(folder.path(), describe);
    EXPECT_EQ(idle.sinceLastInput(), std::nullopt);
    plug("event-lid");
    plug("event-other");
    plug("mouse0");
    EXPECT_EQ(idle.sinceLastInput(), std::nullopt);
    plug("event-mouse");
    plug("event-keyboard");
    EXPECT_LT(idle.sinceLastInput(), TimeInterval(20));

    const TimeInterval now = unixtime::uptime();
    send("event-mouse", now + TimeInterval(100), EV_REL, REL_X, 1);
    EXPECT_EQ(idle.sinceLastInput(), TimeInterval::zero());
    send("event-keyboard", now + TimeInterval(50), EV_KEY, KEY_A, 1);
    send("event-lid", now + TimeInterval(200), EV_SW, SW_LID, 1);
    EXPECT_EQ(idle.sinceLastInput(), TimeInterval::zero());

    unplug("event-mouse");
    EXPECT_NE(idle.sinceLastInput(), std::nullopt);
    unplug("event-keyboard");
    EXPECT_EQ(idle.sinceLastInput(), std::nullopt);
}

TEST_F(EvdevTest, hearsSpaceAlsoOnHotPluggedKeyboards) {
    EvdevSpaceKeys keys(folder.path(), describe);
    plug("event-mouse");
    EXPECT_FALSE(keys.hasListenAccess());
    EXPECT_FALSE(listen(keys));
    plug("event-keyboard");
    EXPECT_TRUE(keys.hasListenAccess());

    const auto listening = listen(keys);
    ASSERT_TRUE(listening);
    key("event-keyboard", KEY_A, 1);
    for (const int value : {1, 2, 2, 0})
        key("event-keyboard", KEY_SPACE, value);
    key("event-keyboard", KEY_SPACE, 1);
    ASSERT_TRUE(loop.runUntil([this] { return spaces.size() >= 2; }));
    EXPECT_THAT(spaces, ElementsAre(false, false)) << "neither repeats nor the key's release";

    plug("event-keyboard-made");
    ASSERT_TRUE(loop.runUntil([this] {
        if (spaces.size() == 2) key("event-keyboard-made", KEY_SPACE, 1);
        return spaces.size() > 2;
    }));
    EXPECT_TRUE(spaces.back());

    unplug("event-keyboard-made");
    unplug("event-keyboard");
    EXPECT_FALSE(keys.hasListenAccess());
    loop.runPending();
}

TEST_F(EvdevTest, mayStopListeningInItsCallback) {
    plug("event-keyboard");
    EvdevSpaceKeys keys(folder.path(), describe);
    std::unique_ptr<SpaceKeys::Listening> brief;
    int calls = 0;
    brief = keys.listen([&](const auto&) {
        ++calls;
        brief.reset();
    });
    const auto listening = listen(keys);
    for (const int value : {1, 0, 1, 0})
        key("event-keyboard", KEY_SPACE, value);
    ASSERT_TRUE(loop.runUntil([&] { return calls > 0; }));
    loop.runPending();
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace marrowby
