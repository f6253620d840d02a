// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/FreedesktopNotices.h"
#include "Tests/Platforms/Linux/MockServices.h"
#include "Tests/Platforms/Linux/QtLoop.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr const char* name = "org.freedesktop.Notifications";
constexpr const char* path = "/org/freedesktop/Notifications";
constexpr const char* mock = "org.freedesktop.DBus.Mock";
constexpr const char* withButtons = R"({"capabilities": "body actions"})";

struct FreedesktopNoticesTest : testing::Test {
    QtLoop loop;
    std::unique_ptr<PrivateBus> bus = startBusForMocks();
    MockService server;
    std::vector<std::string> problems;
    int presses = 0;
    std::optional<FreedesktopNotices> notices;

    void SetUp() override {
        if (!bus) GTEST_SKIP() << noPrivateBus;
        notices.emplace(bus->address(),
                        [this](const std::string& sentence) { problems.push_back(sentence); });
        notices->onPressed = [this] { ++presses; };
    }

    void startServer(const char* parameters = withButtons) {
        server = startMock(*bus, name,
                           {"--session", "--template", "notification_daemon", "-p", parameters});
        ASSERT_TRUE(server);
    }
    void show() { notices->show({.title = "Title", .text = "Text", .button = "Confirm"}); }
    [[nodiscard]] int calls(const char* method) const {
        return static_cast<int>(callsOfMock(*bus, name, path, method).size());
    }
    [[nodiscard]] QVariantList lastNotify() const {
        return callsOfMock(*bus, name, path, "Notify").back();
    }
    [[nodiscard]] bool awaitCalls(const char* method, int count) {
        return loop.runUntil([&] { return calls(method) == count; });
    }
    void emitSignal(const char* signal, const char* signature, const QVariantList& values) const {
        bus->call(name, path, mock, "EmitSignal", {name, signal, signature, values});
    }
    void press(quint32 id, const char* key = "confirm") const {
        emitSignal("ActionInvoked", "us", {id, key});
    }
    /// Whatever the server sent before has arrived: its answer to a new question has.
    void settle() {
        const int before = calls("GetCapabilities");
        show();
        ASSERT_TRUE(awaitCalls("GetCapabilities", before + 1));
        notices->withdraw();
        loop.runPending();
    }
};

TEST_F(FreedesktopNoticesTest, reportsOnePressOfWhatIsShown) {
    ASSERT_NO_FATAL_FAILURE(startServer());
    show();
    ASSERT_TRUE(awaitCalls("Notify", 1));
    loop.runPending();
    press(7);
    press(1, "other");
    {
        // Another program on the bus, with the right number.
        const auto foreign = startMock(*bus, "org.example.Foreign",
                                       {"--session", "org.example.Foreign", path, name});
        ASSERT_TRUE(foreign);
        bus->call("org.example.Foreign", path, mock, "EmitSignal",
                  {name, "ActionInvoked", "us", QVariantList{quint32{1}, "confirm"}});
    }
    EXPECT_EQ(presses, 0);
    press(1);
    EXPECT_TRUE(loop.runUntil([&] { return presses > 0; }));
    press(1);
    ASSERT_NO_FATAL_FAILURE(settle());
    EXPECT_EQ(presses, 1);
    EXPECT_TRUE(problems.empty());
}

TEST_F(FreedesktopNoticesTest, takesBackWhatIsNoLongerWanted) {
    ASSERT_NO_FATAL_FAILURE(startServer());
    show();
    ASSERT_TRUE(awaitCalls("Notify", 1));
    loop.runPending();
    notices->withdraw();
    ASSERT_TRUE(awaitCalls("CloseNotification", 1));
    press(1);
    // Withdrawn before the server has answered.
    show();
    notices->withdraw();
    ASSERT_NO_FATAL_FAILURE(settle());
    EXPECT_EQ(calls("Notify"), calls("CloseNotification"));
    EXPECT_EQ(presses, 0);

    // Closed by the user.
    show();
    const int shown = calls("Notify") + 1;
    ASSERT_TRUE(awaitCalls("Notify", shown));
    loop.runPending();
    emitSignal("NotificationClosed", "uu", {quint32(shown), quint32{2}});
    press(quint32(shown));
    ASSERT_NO_FATAL_FAILURE(settle());
    EXPECT_EQ(presses, 0);
}

TEST_F(FreedesktopNoticesTest, showsABriefOneAtOnceOrNever) {
    const DesktopNotices::Notice brief{
        .title = "Title", .text = "Text", .button = "Again", .isBrief = true};
    // Nobody is there, and comes late: only what stays up is still to be shown.
    FreedesktopNotices staying(bus->address(), {});
    staying.show({.title = "Title", .text = "Text", .button = "Confirm"});
    notices->show(brief);
    EXPECT_TRUE(loop.runUntil([&] { return problems.size() == 1; }));
    ASSERT_NO_FATAL_FAILURE(startServer(R"({"capabilities": "body"})"));
    ASSERT_TRUE(awaitCalls("GetCapabilities", 1));
    ASSERT_NO_FATAL_FAILURE(settle());
    EXPECT_EQ(calls("GetCapabilities"), 2);
    EXPECT_EQ(calls("Notify"), 0);
    staying.withdraw();
    notices->show(brief);
    ASSERT_TRUE(awaitCalls("Notify", 1));
    EXPECT_EQ(lastNotify().value(5).toStringList(), QStringList()) << "without a button";
    // It goes while the notice is shown, and comes back.
    loop.runPending();
    server.reset();
    ASSERT_NO_FATAL_FAILURE(startServer());
    notices->show(brief);
    ASSERT_TRUE(awaitCalls("Notify", 1));
    EXPECT_EQ(lastNotify().value(5).toStringList().size(), 4);
    EXPECT_EQ(lastNotify().value(7).toInt(), -1);
    loop.runPending();
    press(1);
    EXPECT_TRUE(loop.runUntil([&] { return presses == 1; }));
    notices->show(brief);
    ASSERT_TRUE(awaitCalls("Notify", 2));
    bus->kill();
    loop.runPending();
    notices->show(brief);
    loop.runPending();
    notices->withdraw();
    EXPECT_EQ(presses, 1);
}

TEST_F(FreedesktopNoticesTest, followsServersThatComeAndGo) {
    show();
    EXPECT_TRUE(loop.runUntil([&] { return problems.size() == 1; }));
    ASSERT_NO_FATAL_FAILURE(startServer());
    ASSERT_TRUE(awaitCalls("Notify", 1));
    server.reset();
    ASSERT_NO_FATAL_FAILURE(startServer(R"({"capabilities": "body"})"));
    ASSERT_TRUE(awaitCalls("GetCapabilities", 1));
    loop.runPending();
    EXPECT_EQ(calls("Notify"), 0);
    bus->kill();
    loop.runPending();
    notices->withdraw();
    EXPECT_EQ(problems.size(), 1U);

    std::vector<std::string> others;
    FreedesktopNotices nowhere("", [&](const std::string& one) { others.push_back(one); });
    nowhere.show({});
    EXPECT_EQ(others.size(), 1U);
    nowhere.withdraw();
}

}  // namespace
}  // namespace marrowby
