// SPDX-License-Identifier: Apache-2.0
#include "Tests/Program/ProgramTest.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QVariantMap>
#include <map>

namespace marrowby {
namespace {

constexpr const char* mock = "org.freedesktop.DBus.Mock";
constexpr const char* notices = "org.freedesktop.Notifications";
constexpr const char* noticesPath = "/org/freedesktop/Notifications";
constexpr const char* trays = "org.kde.StatusNotifierWatcher";
constexpr const char* traysPath = "/StatusNotifierWatcher";
constexpr const char* menus = "com.canonical.dbusmenu";

/// A desktop with a notification server and a tray, which are scripted.
class DesktopPresenceTest : public ProgramTest {
  protected:
    void SetUp() override {
        ProgramTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        qDBusRegisterMetaType<QList<int>>();
        environment.insert("ASAN_OPTIONS", wholeStacks);
        noticeServer_ = startMock(*bus, notices,
                                  {"--session", "--template", "notification_daemon", "-p",
                                   R"({"capabilities": "body actions"})"});
        trayServer_ = startMock(*bus, trays, {"--session", trays, traysPath, trays});
        ASSERT_TRUE(noticeServer_ && trayServer_);
        bus->call(trays, traysPath, mock, "AddMethod",
                  {trays, "RegisterStatusNotifierItem", "s", "", ""});
        bus->call(
            trays, traysPath, mock, "AddProperty",
            {trays, "IsStatusNotifierHostRegistered", QVariant::fromValue(QDBusVariant(true))});
    }
    [[nodiscard]] std::vector<QVariantList> calls(const char* service, const char* path,
                                                  const char* method) const {
        return callsOfMock(*bus, service, path, method);
    }
    void awaitNotices(const char* method, std::size_t count) {
        ASSERT_TRUE(loop.runUntil([&] {
            return calls(notices, noticesPath, method).size() >= count;
        })) << method
            << program->recentWords();
    }
    /// The tray menu's entries that are shown, by label.
    [[nodiscard]] std::map<std::string, int> menu() {
        const auto items = calls(trays, traysPath, "RegisterStatusNotifierItem");
        std::map<std::string, int> entries;
        if (items.empty()) return entries;
        item_ = items.back().value(0).toString();
        QList<int> numbers;
        for (int number = 1; number < 20; ++number)
            numbers.push_back(number);
        const auto found =
            bus->call(item_, "/MenuBar", menus, "GetGroupProperties",
                      {QVariant::fromValue(numbers), QStringList{"label", "visible"}})
                .value<QDBusArgument>();
        found.beginArray();
        while (!found.atEnd()) {
            int number = 0;
            QVariantMap properties;
            found.beginStructure();
            found >> number >> properties;
            found.endStructure();
            if (properties.value("visible", true).toBool())
                entries[properties.value("label").toString().remove('_').toStdString()] = number;
        }
        found.endArray();
        return entries;
    }
    void choose(const std::string& entry) {
        ASSERT_TRUE(loop.runUntil([&] { return menu().contains(entry); })) << entry;
        bus->call(item_, "/MenuBar", menus, "Event",
                  {menu().at(entry), "clicked", QVariant::fromValue(QDBusVariant(QString())),
                   quint32{0}});
    }

  private:
    MockService noticeServer_;
    MockService trayServer_;
    QString item_;
};

TEST_F(DesktopPresenceTest, asksAfterALoginAndShowsItsStateInTheTray) {
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_NO_FATAL_FAILURE(setUpThroughTheWindow());
    ASSERT_EQ(program->terminate(), 0) << program->recentWords();
    EXPECT_TRUE(calls(notices, noticesPath, "Notify").empty());

    ASSERT_NO_FATAL_FAILURE(start({"--at-login"}));
    ASSERT_NO_FATAL_FAILURE(awaitNotices("Notify", 1));
    EXPECT_TRUE(
        loop.runUntil([&] { return menu().contains("Needs your password once this session"); }));
    ASSERT_NO_FATAL_FAILURE(lockScreen());
    ASSERT_NO_FATAL_FAILURE(awaitNotices("CloseNotification", 1));
    locker->kill();
    ASSERT_NO_FATAL_FAILURE(awaitNotices("Notify", 2));
    loop.runPending();
    bus->call(notices, noticesPath, mock, "EmitSignal",
              {notices, "ActionInvoked", "us", QVariantList{quint32{2}, "confirm"}});
    EXPECT_TRUE(loop.runUntil([&] { return menu().contains("Ready"); })) << program->recentWords();

    ASSERT_NO_FATAL_FAILURE(choose("Pause"));
    EXPECT_TRUE(loop.runUntil([&] { return menu().contains("Paused"); }));
    ASSERT_NO_FATAL_FAILURE(choose("Resume"));
    EXPECT_TRUE(loop.runUntil([&] { return menu().contains("Ready"); }));
    ASSERT_NO_FATAL_FAILURE(choose("Settings…"));
    ASSERT_NO_FATAL_FAILURE(sees("Marrowby Unlock"));
    ASSERT_NO_FATAL_FAILURE(choose("Quit"));
    EXPECT_EQ(program->awaitEnd(), EXIT_SUCCESS) << program->recentWords();
}

}  // namespace
}  // namespace marrowby
