// SPDX-License-Identifier: Apache-2.0
#include "Tests/Platforms/Linux/Session/MockLogind.h"
#include "Tests/Program/ProgramTest.h"
#include "UnlockCore/Engine/UnlockFailure.h"

#include <QDBusVariant>
#include <expected>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

namespace marrowby {
namespace {

using testing::HasSubstr;

constexpr const char* shellName = "org.gnome.Shell";
constexpr const char* displaysName = "org.gnome.Mutter.DisplayConfig";
constexpr const char* displaysPath = "/org/gnome/Mutter/DisplayConfig";
constexpr const char* noticesName = "org.freedesktop.Notifications";
constexpr const char* noticesPath = "/org/freedesktop/Notifications";
constexpr const char* idleName = "org.gnome.Mutter.IdleMonitor";
constexpr const char* idlePath = "/org/gnome/Mutter/IdleMonitor/Core";
constexpr unsigned pauseWatch = 7;
constexpr unsigned inputWatch = 8;

/// sway without a screen. It refuses to run as root, so that there it runs as nobody.
struct SwayDesktop {
    SwayDesktop() {
        std::ofstream(folder.path() / "sway.conf") << "xwayland disable\n";
        std::vector<std::string> command{"sway", "-c", (folder.path() / "sway.conf").string()};
        constexpr ::uid_t nobody = 65534;
        if (::getuid() == 0 && ::chown(folder.path().c_str(), nobody, nobody) == 0) {
            command.insert(command.begin(),
                           {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
        }
        program = ChildProcess::start(
            {.arguments = command,
             .environment = {"WLR_BACKENDS=headless", "WLR_LIBINPUT_NO_DEVICES=1",
                             "WLR_RENDERER=pixman", "LIBSEAT_BACKEND=noop", "WAYLAND_DISPLAY=",
                             "DISPLAY=", "XDG_RUNTIME_DIR=" + folder.path().string()}});
    }
    /// Its path; empty until it is there.
    [[nodiscard]] std::string socket() const {
        for (const auto& file : std::filesystem::directory_iterator(folder.path())) {
            const std::string name = file.path().filename().string();
            if (name.starts_with("wayland-") && !name.ends_with(".lock"))
                return file.path().string();
        }
        return {};
    }

    TemporaryFolder folder;
    std::expected<ChildProcess, std::string> program = std::unexpected("not started");
};

/// The program in a Wayland session; its windows are on the private display, as through Xwayland.
class WaylandProgramTest : public ProgramTest {
  protected:
    void SetUp() override {
        ProgramTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        environment.insert("XDG_SESSION_TYPE", "wayland");
        environment.insert("DBUS_SYSTEM_BUS_ADDRESS", QString::fromStdString(bus->address()));
        environment.insert("XDG_SESSION_ID", "c1");
        logind.emplace(*bus);
        ASSERT_TRUE(logind->isRunning());
        logind->obeyUnlock();
    }

    /// What a desktop like GNOME's has on the bus: its name, its displays' power, and when input
    /// pauses and goes on.
    void startDesktop() {
        shell = startMock(*bus, shellName, {"--session", shellName, displaysPath, displaysName});
        idle = startMock(*bus, idleName, {"--session", idleName, idlePath, idleName});
        noticeServer = startMock(*bus, noticesName,
                                 {"--session", "--template", "notification_daemon", "-p",
                                  R"({"capabilities": "body actions"})"});
        ASSERT_TRUE(shell && idle && noticeServer);
        bus->call(shellName, displaysPath, mockInterface, "AddProperty",
                  {displaysName, "PowerSaveMode", QVariant::fromValue(QDBusVariant(0))});
        watch("AddIdleWatch", "t", pauseWatch);
        watch("AddUserActiveWatch", "", inputWatch);
    }
    void watch(const char* method, const char* arguments, unsigned id) const {
        bus->call(idleName, idlePath, mockInterface, "AddMethod",
                  {idleName, method, arguments, "u", "ret = " + QString::number(id)});
    }
    /// Input pauses and comes back, again and again, until the condition holds.
    [[nodiscard]] bool returnsUntil(const std::function<bool()>& condition) {
        bool isPause = true;
        QTimer input;
        QObject::connect(&input, &QTimer::timeout, [this, &isPause] {
            const unsigned id = std::exchange(isPause, !isPause) ? pauseWatch : inputWatch;
            bus->call(idleName, idlePath, mockInterface, "EmitSignal",
                      {idleName, "WatchFired", "u", QVariantList{quint32{id}}});
        });
        input.start(1700);
        return loop.runUntil(condition);
    }
    /// The displays go off and on.
    void wakeDisplays() {
        for (const int mode : {3, 0}) {
            bus->call(shellName, displaysPath, mockInterface, "UpdateProperties",
                      {displaysName, QVariantMap{{"PowerSaveMode", mode}}});
        }
    }
    /// The button of the notice that tells of the unlock, once it is there.
    void pressNotice() {
        std::vector<QVariantList> shown;
        ASSERT_TRUE(loop.runUntil([&] {
            shown = callsOfMock(*bus, noticesName, noticesPath, "Notify");
            return !shown.empty();
        }));
        EXPECT_EQ(shown.size(), 1U);
        EXPECT_EQ(shown.back().value(3).toString(), "Unlocked for Robin");
        // The program has its number: nothing else shows that.
        QTimer pressing;
        QObject::connect(&pressing, &QTimer::timeout, [this] {
            bus->call(noticesName, noticesPath, mockInterface, "EmitSignal",
                      {noticesName, "ActionInvoked", "us", QVariantList{quint32{1}, "confirm"}});
        });
        pressing.start(50);
        ASSERT_TRUE(loop.runUntil([&] {
            return !callsOfMock(*bus, noticesName, noticesPath, "CloseNotification").empty();
        }));
    }
    std::optional<MockLogind> logind;
    MockService noticeServer;
    MockService shell;
    MockService idle;
};

TEST_F(WaylandProgramTest, hasTheDesktopUnlockForItsOwnerAlone) {
    ASSERT_NO_FATAL_FAILURE(startDesktop());
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_NO_FATAL_FAILURE(setUpWithConsent());
    EXPECT_THAT(tell({"status"}), HasSubstr("Ready: "));

    ASSERT_TRUE(program->order("scene live-normal 9"));
    logind->setSession("LockedHint", true);
    ASSERT_TRUE(program->logs(logevent::locked)) << program->recentWords();
    ASSERT_TRUE(returnsUntil([&] {
        return program->hasLogged(logevent::failed,
                                  title(UnlockFailure::NotRecognised{}).english());
    })) << program->recentWords();
    EXPECT_FALSE(program->hasLogged(logevent::askedDesktop)) << program->recentWords();

    // Nobody touches anything.
    ASSERT_TRUE(program->order("scene live-normal 4"));
    wakeDisplays();
    ASSERT_TRUE(loop.runUntil([&] { return program->hasLogged(logevent::unlocked); }))
        << program->recentWords();
    EXPECT_TRUE(program->hasLogged(logevent::askedDesktop)) << program->recentWords();
    EXPECT_FALSE(program->hasLogged(logevent::typed));

    // Locked again through the notice, with a shell that does nothing: it is asked once.
    logind->call(sessionPath, "AddMethod", {sessionInterface, "Unlock", "", "", ""});
    logind->obeyLock();
    pressNotice();
    ASSERT_TRUE(program->logs(logevent::locked)) << program->recentWords();
    ASSERT_TRUE(returnsUntil([&] {
        return program->hasLogged(logevent::failed, title(UnlockFailure::NotOpened{}).english());
    })) << program->recentWords();
    ASSERT_TRUE(program->logs(logevent::stoodDown)) << program->recentWords();
    expectAnUntouchedTerminal();
}

TEST_F(WaylandProgramTest, saysOnSwayThatItCannotUnlockAndLetsItsUserOut) {
    const SwayDesktop sway;
    if (!sway.program) GTEST_SKIP() << "Skipped: needs sway: " << sway.program.error();
    std::string socket;
    ASSERT_TRUE(loop.runUntil([&] {
        socket = sway.socket();
        return !socket.empty() || !sway.program->isRunning();
    }));
    ASSERT_FALSE(socket.empty()) << "sway has ended";
    environment.insert("WAYLAND_DISPLAY", QString::fromStdString(socket));
    environment.insert("QT_QPA_PLATFORM", "wayland");
    environment.insert("ASAN_OPTIONS", wholeStacks);
    environment.remove("DISPLAY");
    const auto press = [&](const char* key) {
        ASSERT_TRUE(loop.runUntil([this] { return program->hasFocus(); }))
            << program->recentWords();
        const auto typed =
            ChildProcess::start({.arguments = {"wtype", "-s", "500", "-k", key},
                                 .environment = {"WAYLAND_DISPLAY=" + socket,
                                                 "XDG_RUNTIME_DIR=" + home.path().string()}});
        ASSERT_TRUE(typed) << typed.error();
        ASSERT_TRUE(loop.runUntil([&] { return !typed->isRunning(); }));
    };

    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_NO_FATAL_FAILURE(sees("Welcome to Marrowby Unlock"));
    EXPECT_THAT(tell({"status"}), HasSubstr("Not supported on this desktop yet: "));
    EXPECT_THAT(tell({"doctor"}), HasSubstr("a locker that ends while typing goes on"));
    ASSERT_NO_FATAL_FAILURE(press("Return"));
    ASSERT_NO_FATAL_FAILURE(sees("Marrowby Unlock"));
    tell({"quit"});
    EXPECT_EQ(program->awaitEnd(), 0) << program->recentWords();
}

}  // namespace
}  // namespace marrowby
