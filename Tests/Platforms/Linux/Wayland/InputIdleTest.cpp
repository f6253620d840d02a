// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/Session/GnomeInputIdle.h"
#include "Platforms/Linux/Wayland/WaylandInputIdle.h"
#include "Tests/Platforms/Linux/MockServices.h"
#include "Tests/Platforms/Linux/QtLoop.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "Tests/Platforms/Linux/Wayland/ScriptedCompositor.h"
#include "UnlockCore/Platform/IdleEdges.h"

#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

struct InputIdleTest : testing::Test {
    QtLoop loop;

    /// Whether input has paused, goes on, or is unknown, as read now.
    [[nodiscard]] static std::string reading(const InputIdle& idle) {
        const auto since = idle.sinceLastInput();
        if (!since) return "unknown";
        return *since >= IdleEdges::pause ? "paused" : "active";
    }
};

TEST_F(InputIdleTest, hearsAWaylandCompositor) {
    const TemporaryFolder folder;
    qputenv("XDG_RUNTIME_DIR", folder.path().c_str());
    const WaylandInputIdle alone("wayland-test");
    EXPECT_EQ(reading(alone), "unknown") << "nobody is there";

    auto compositor = std::make_unique<ScriptedCompositor>("wayland-test");
    compositor->addNotifier();
    const auto until = [&](const std::function<bool()>& condition) {
        return loop.runUntil([&] {
            if (compositor) compositor->turn();
            return condition();
        });
    };
    {
        const WaylandInputIdle idle("wayland-test");
        const WaylandInputIdle other("wayland-test");
        EXPECT_EQ(reading(idle), "unknown") << "a compositor without a seat";
        compositor->addSeat();
        compositor->addSeat();
        ASSERT_TRUE(until([&] { return reading(idle) == "active" && reading(other) == "active"; }));
        EXPECT_EQ(compositor->seats, 2) << "one for each";
        EXPECT_EQ(compositor->timeout, 1000U);
    }
    const WaylandInputIdle idle("wayland-test");
    compositor->notification = nullptr;
    ASSERT_TRUE(until([&] { return compositor->notification != nullptr; }));
    for (int round = 0; round < 2; ++round) {
        compositor->pause();
        ASSERT_TRUE(until([&] { return reading(idle) == "paused"; }));
        compositor->resume();
        ASSERT_TRUE(until([&] { return reading(idle) == "active"; }));
    }
    compositor.reset();
    EXPECT_TRUE(until([&] { return reading(idle) == "unknown"; }));
}

/// GNOME's monitor, as a mock whose watches fire when the test says.
TEST_F(InputIdleTest, hearsGnome) {
    const auto bus = startBusForMocks();
    if (!bus) GTEST_SKIP() << noPrivateBus;
    constexpr const char* name = "org.gnome.Mutter.IdleMonitor";
    constexpr const char* path = "/org/gnome/Mutter/IdleMonitor/Core";
    constexpr const char* mock = "org.freedesktop.DBus.Mock";
    GnomeInputIdle idle(bus->address());
    idle.start();
    EXPECT_EQ(reading(idle), "unknown");
    for (int round = 0; round < 2; ++round) {
        // Each instance counts its watches anew, and may fire those of others.
        const auto monitor = startMock(*bus, name, {"--session", name, path, name});
        ASSERT_TRUE(monitor);
        const auto answer = [&](const char* method, const char* in, const char* out, unsigned it) {
            bus->call(name, path, mock, "AddMethod",
                      {name, method, in, out, "ret = " + QString::number(it)});
        };
        const auto fire = [&](unsigned id) {
            bus->call(name, path, mock, "EmitSignal",
                      {name, "WatchFired", "u", QVariantList{quint32{id}}});
        };
        answer("AddIdleWatch", "t", "u", 7);
        answer("AddUserActiveWatch", "", "u", 8);
        answer("GetIdletime", "", "t", 1000);
        GnomeInputIdle late(bus->address());
        late.start();
        ASSERT_TRUE(loop.runUntil([&] { return reading(late) == "active"; }));
        fire(8);
        fire(99);
        fire(7);
        ASSERT_TRUE(loop.runUntil([&] { return reading(late) == "paused"; }));
        ASSERT_TRUE(loop.runUntil([&] {
            fire(8);
            return reading(late) == "active";
        }));
        fire(7);
        ASSERT_TRUE(loop.runUntil([&] { return reading(late) == "paused"; }));
        // Input that comes before its watch is there; the watch waits for the next.
        answer("GetIdletime", "", "t", 30);
        fire(7);
        ASSERT_TRUE(loop.runUntil([&] { return reading(late) == "active"; }));
    }
    EXPECT_TRUE(loop.runUntil([&] { return reading(idle) == "unknown"; }));
}

}  // namespace
}  // namespace marrowby
