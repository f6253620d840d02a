#include "Platforms/Linux/X11InputIdle.h"
#include "Platforms/Linux/X11KeyboardDevices.h"
#include "Tests/Platforms/Linux/PrivateDisplay.h"
#include "Tests/Platforms/Linux/QtLoop.h"

#include <cmath>
#include <memory>
#include <optional>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace marrowby {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr KeyboardDevices::Match keyboards{.usagePage = 1, .usage = 6};

struct X11InputTest : testing::Test {
    QtLoop loop;
    std::unique_ptr<PrivateDisplay> display = PrivateDisplay::start();
    std::unique_ptr<X11KeyboardDevices> devices;
    std::vector<std::int64_t> spaces;

    void SetUp() override {
        if (!display) GTEST_SKIP() << noPrivateDisplay;
        devices = X11KeyboardDevices::create(display->name()).value();
    }

    [[nodiscard]] std::unique_ptr<KeyboardDevices::Listening> listen(X11KeyboardDevices& to) {
        return to.open(keyboards, [this](const KeyboardDevices::InputValue& value) {
            EXPECT_EQ(value.usagePage, 7U);
            EXPECT_EQ(value.usage, 44U);
            // The test types through XTEST.
            EXPECT_TRUE(value.isSynthetic);
            spaces.push_back(value.value);
        });
    }
    [[nodiscard]] bool hears(std::size_t count) {
        return loop.runUntil([&] { return spaces.size() >= count; });
    }
};

TEST_F(X11InputTest, idleTimeStartsAgainWithInput) {
    const auto idle = X11InputIdle::create(display->name()).value();
    EXPECT_EQ(idle->registryIdleNanoseconds(), std::nullopt);
    const TimeInterval uptime = idle->systemUptime();
    for (const bool byPointer : {true, false}) {
        TimeInterval before{};
        ASSERT_TRUE(loop.runUntil([&] {
            before = idle->secondsSinceLastInput();
            return before > TimeInterval(0.1);
        }));
        if (byPointer) display->movePointer();
        if (!byPointer) display->tap(XKB_KEY_a);
        EXPECT_TRUE(loop.runUntil([&] { return idle->secondsSinceLastInput() < before; }));
    }
    EXPECT_GT(idle->systemUptime(), uptime + TimeInterval(0.1));

    display->kill();
    EXPECT_TRUE(std::isnan(idle->secondsSinceLastInput().count()));
    EXPECT_FALSE(X11InputIdle::create(display->name()));
}

TEST_F(X11InputTest, hearsSpaceAloneAlsoWhileALockerHoldsTheKeyboard) {
    EXPECT_TRUE(devices->hasListenAccess());
    const auto listening = listen(*devices);
    ASSERT_TRUE(listening);
    display->tap(XKB_KEY_space);
    ASSERT_TRUE(hears(2));
    EXPECT_THAT(spaces, ElementsAre(1, 0));

    const XcbConnection& connection = display->connection();
    const auto grab = connection.reply<xcb_grab_keyboard_reply>(
        xcb_grab_keyboard(connection.get(), 0, connection.root(), XCB_CURRENT_TIME,
                          XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    ASSERT_TRUE(grab && grab->status == XCB_GRAB_STATUS_SUCCESS);
    for (const auto keysym : {XKB_KEY_a, XKB_KEY_Return, XKB_KEY_space})
        display->tap(static_cast<std::uint32_t>(keysym));
    ASSERT_TRUE(hears(4));
    EXPECT_THAT(spaces, ElementsAre(1, 0, 1, 0));
}

TEST_F(X11InputTest, hearsSpaceUnderARealLocker) {
    auto locker = display->run("i3lock", "-n");
    if (!locker) GTEST_SKIP() << "Skipped: needs i3lock.";
    const XcbConnection& connection = display->connection();
    const auto isGrabbed = [&] {
        const auto grab = connection.reply<xcb_grab_keyboard_reply>(
            xcb_grab_keyboard(connection.get(), 0, connection.root(), XCB_CURRENT_TIME,
                              XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        if (grab->status == XCB_GRAB_STATUS_ALREADY_GRABBED) return true;
        xcb_ungrab_keyboard(connection.get(), XCB_CURRENT_TIME);
        connection.flush();
        return false;
    };
    ASSERT_TRUE(loop.runUntil(isGrabbed));
    const auto listening = listen(*devices);
    ASSERT_TRUE(listening);
    display->tap(XKB_KEY_space);
    EXPECT_TRUE(hears(2));
    locker.kill();
}

TEST_F(X11InputTest, followsTheLayout) {
    const auto listening = listen(*devices);
    ASSERT_TRUE(listening);
    constexpr std::uint8_t unusedKeycode = 200;
    display->mapKey(unusedKeycode, XKB_KEY_space);
    // Its first key may come before the new layout is read.
    ASSERT_TRUE(loop.runUntil([&] {
        display->tap(XKB_KEY_space);
        return spaces.size() >= 2;
    }));
    display->mapKey(65, XKB_KEY_x);
    ASSERT_TRUE(loop.runUntil([&] {
        spaces.clear();
        display->tap(XKB_KEY_space);
        return hears(2);
    }));
}

TEST_F(X11InputTest, opensKeyboardsOnly) {
    EXPECT_FALSE(devices->open({.usagePage = 1, .usage = 2}, [](const auto&) {}));
    EXPECT_FALSE(devices->open({.usagePage = 12, .usage = 6}, [](const auto&) {}));
}

TEST_F(X11InputTest, mayStopListeningFromItsOwnReport) {
    std::unique_ptr<KeyboardDevices::Listening> brief;
    int calls = 0;
    brief = devices->open(keyboards, [&](const auto&) {
        ++calls;
        brief.reset();
    });
    const auto listening = listen(*devices);
    ASSERT_TRUE(brief && listening);
    display->tap(XKB_KEY_space);
    display->tap(XKB_KEY_space);
    ASSERT_TRUE(hears(4));
    EXPECT_EQ(calls, 1);
}

TEST_F(X11InputTest, fallsSilentWithTheDisplay) {
    const auto listening = listen(*devices);
    ASSERT_TRUE(listening);
    display->kill();
    EXPECT_TRUE(loop.runUntil([&] { return !devices->hasListenAccess(); }));
    loop.runPending();
    EXPECT_FALSE(listen(*devices));
    EXPECT_THAT(spaces, IsEmpty());
}

}  // namespace
}  // namespace marrowby
