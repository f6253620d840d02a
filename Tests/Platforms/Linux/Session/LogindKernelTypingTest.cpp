// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/LogindKernelTyping.h"
#include "Tests/Platforms/Linux/MockServices.h"
#include "Tests/Platforms/Linux/PrivateDisplay.h"
#include "Tests/Platforms/Linux/QtLoop.h"

#include <QVariantMap>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

namespace marrowby {
namespace {

constexpr const char* logind = "org.freedesktop.login1";
constexpr const char* ownSession = "/org/freedesktop/login1/session/auto";
constexpr const char* mockInterface = "org.freedesktop.DBus.Mock";

/// A fake logind that answers for the caller's session.
struct LogindKernelTypingTest : testing::Test {
    QtLoop loop;
    std::unique_ptr<PrivateBus> bus = startBusForMocks();
    MockService program;

    void SetUp() override {
        if (!bus) GTEST_SKIP() << noPrivateBus;
        begin(getuid());
    }
    void begin(quint32 user) {
        program = startMock(*bus, logind, {"--system", "--template", "logind"});
        ASSERT_TRUE(program);
        bus->call(logind, "/org/freedesktop/login1", mockInterface, "AddSession",
                  {"auto", "seat0", user, "somebody", true});
        set("Display", "");
        set("LockedHint", true);
    }
    void set(const char* property, const QVariant& value) const {
        const QVariantMap changed{{property, value}};
        bus->call(logind, ownSession, mockInterface, "UpdateProperties",
                  {"org.freedesktop.login1.Session", changed});
    }
};

TEST_F(LogindKernelTypingTest, typesOnlyIntoTheActiveLockedSession) {
    const LogindKernelTyping typing(bus->address(), "");
    EXPECT_TRUE(typing.mayType());
    const struct {
        const char* property;
        QVariant bad;
        QVariant good;
    } cases[] = {{"LockedHint", false, true},
                 {"LockedHint", "yes", true},
                 {"Active", false, true},
                 {"Type", "x11", "tty"}};
    for (const auto& [property, bad, good] : cases) {
        set(property, bad);
        EXPECT_FALSE(typing.mayType()) << property;
        set(property, good);
        EXPECT_TRUE(typing.mayType()) << property;
    }
    program.reset();
    EXPECT_FALSE(typing.mayType()) << "no logind";
    begin(getuid() + 1);
    EXPECT_FALSE(typing.mayType()) << "another user's session";
    program.reset();
    begin(getuid());
    EXPECT_TRUE(typing.mayType());
    bus->kill();
    EXPECT_FALSE(typing.mayType());
    EXPECT_FALSE(LogindKernelTyping("", "").mayType());
}

TEST_F(LogindKernelTypingTest, typesNothingWhereAnXServerAnswers) {
    auto display = PrivateDisplay::start();
    if (!display) GTEST_SKIP() << noPrivateDisplay;
    const LogindKernelTyping typing(bus->address(), display->name());
    EXPECT_FALSE(typing.mayType());
    const LogindKernelTyping withoutEnvironment(bus->address(), "");
    EXPECT_TRUE(withoutEnvironment.mayType());
    set("Display", QString::fromStdString(display->name()));
    EXPECT_FALSE(withoutEnvironment.mayType());
    // The X server of a Wayland compositor.
    set("Type", "wayland");
    EXPECT_TRUE(typing.mayType());
    set("Type", "tty");
    display.reset();
    EXPECT_TRUE(typing.mayType());
    EXPECT_FALSE(LogindKernelTyping(bus->address(), "elsewhere:0").mayType());
}

}  // namespace
}  // namespace marrowby
