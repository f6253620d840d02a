// SPDX-License-Identifier: Apache-2.0

// On real desktops with their own lockers; desktop-in-container runs it in a session of a real
// logind.

#include "Platforms/Linux/Desktop/BusAddress.h"
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Session/DesktopSession.h"
#include "Tests/Program/ProgramTest.h"
#include "UnlockCore/Engine/UnlockFailure.h"
#include "UnlockCore/Platform/IdleEdges.h"

#include <QDBusVariant>
#include <QProcess>
#include <QTimer>
#include <algorithm>
#include <expected>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

namespace marrowby {
namespace {

using testing::ElementsAre;

/// A compositor whose screen is a window of an X display: keys pressed there are its input.
struct Desktop {
    const char* name;
    const char* busName;
    /// The X display takes the place of the empty argument, where there is one; the name of the
    /// Wayland socket follows.
    std::vector<std::string> command;
    std::vector<std::string> environment;
    /// The process that shows the lock screen, as the kernel shortens its name.
    const char* locker;

    friend void PrintTo(const Desktop& desktop, std::ostream* out) { *out << desktop.name; }
};

const Desktop gnome{.name = "gnome",
                    .busName = "org.gnome.Shell",
                    .command = {"gnome-shell", "--nested", "--wayland", "--wayland-display"},
                    .environment = {},
                    .locker = "gnome-shell"};
const Desktop kde{.name = "kde",
                  .busName = "org.kde.KWin",
                  .command = {"kwin_wayland", "--x11-display", "", "--socket"},
                  // Draws without OpenGL.
                  .environment = {"KWIN_COMPOSE=Q"},
                  .locker = "kscreenlocker_g"};

class DesktopTest : public ProgramTest, public testing::WithParamInterface<Desktop> {
  protected:
    void SetUp() override {
        ProgramTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        ASSERT_NO_FATAL_FAILURE(startShell());
        if (GetParam().busName == gnome.busName) {
            ASSERT_NO_FATAL_FAILURE(leaveOverview());
        }
        environment.insert("QT_QPA_PLATFORM", "wayland");
        environment.insert("WAYLAND_DISPLAY", QString::fromStdString(socket()));
        environment.remove("DISPLAY");
    }
    void TearDown() override {
        if (HasFailure() && hands) hands->screen().save("screen.png");
        // Before its compositor.
        program.reset();
        ProgramTest::TearDown();
    }

    [[nodiscard]] std::string socket() const { return (home.path() / "desktop").string(); }

    void startShell() {
        ChildProcess::Program start{.arguments = GetParam().command,
                                    .environment = GetParam().environment,
                                    .standardError = STDERR_FILENO,
                                    .endSignal = SIGKILL};
        std::ranges::replace(start.arguments, std::string(), desktop->displayName());
        start.arguments.emplace_back("desktop");
        const std::string folder = home.path().string();
        start.environment.insert(
            start.environment.end(),
            {"DISPLAY=" + desktop->displayName(), "WAYLAND_DISPLAY=", "HOME=" + folder,
             "XDG_RUNTIME_DIR=" + folder, "DBUS_SESSION_BUS_ADDRESS=" + bus->address()});
        shell = ChildProcess::start(start);
        ASSERT_TRUE(shell) << shell.error();
        const auto isOnTheBus = [this] {
            return bus
                ->call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                       "NameHasOwner", {GetParam().busName})
                .toBool();
        };
        ASSERT_TRUE(loop.runUntil([&] { return isOnTheBus() || !shell->isRunning(); }));
        ASSERT_TRUE(shell->isRunning()) << "The desktop has ended.";
    }
    /// GNOME begins with its overview, in which no window gets the focus.
    void leaveOverview() {
        const auto property = [this](const char* method, const QVariantList& value) {
            return bus->call(gnome.busName, "/org/gnome/Shell", "org.freedesktop.DBus.Properties",
                             method, QVariantList{gnome.busName, "OverviewActive"} + value);
        };
        const auto isActive = [&] {
            return property("Get", {}).value<QDBusVariant>().variant().toBool();
        };
        ASSERT_TRUE(loop.runUntil(isActive));
        ASSERT_TRUE(loop.runUntil([&] {
            property("Set", {QVariant::fromValue(QDBusVariant(false))});
            return !isActive();
        }));
    }

    std::string output(const char* command, const QStringList& words) {
        QProcess process;
        process.start(command, words);
        EXPECT_TRUE(loop.runUntil([&] { return process.state() == QProcess::NotRunning; }));
        return process.readAllStandardOutput().toStdString();
    }
    [[nodiscard]] static QString sessionID() { return qEnvironmentVariable("XDG_SESSION_ID"); }
    [[nodiscard]] bool isLocked() {
        return output("loginctl", {"show-session", "--property=LockedHint", sessionID()}) ==
               "LockedHint=yes\n";
    }
    [[nodiscard]] bool isLockerThere() {
        return !output("pgrep", {"-x", GetParam().locker}).empty();
    }
    void lock() {
        // A desktop that has just started may not listen yet.
        QTimer asking;
        QObject::connect(&asking, &QTimer::timeout, [] {
            QProcess::startDetached("loginctl", {"lock-session", sessionID()});
        });
        asking.start(500);
        ASSERT_TRUE(loop.runUntil([this] { return isLocked() && isLockerThere(); }));
    }

    /// Of this session; nothing is read from the kernel.
    [[nodiscard]] DesktopSession::Places places() const {
        return {.systemBus = busaddress::system(),
                .sessionBus = bus->address(),
                .display = {},
                .inputDevices = home.path().string(),
                .isWayland = true,
                .waylandDisplay = socket()};
    }

    QtMainThread mainThread;
    std::expected<ChildProcess, std::string> shell = std::unexpected("not started");
};

TEST_P(DesktopTest, unlocksForItsOwnerAlone) {
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_NO_FATAL_FAILURE(setUpWithConsent());

    ASSERT_TRUE(program->order("scene live-normal 9"));
    ASSERT_NO_FATAL_FAILURE(lock());
    ASSERT_TRUE(program->logs(logevent::locked)) << program->recentWords();
    ASSERT_TRUE(comesBackUntil([this] {
        return program->hasLogged(logevent::failed,
                                  title(UnlockFailure::NotRecognised{}).english());
    })) << program->recentWords();
    EXPECT_FALSE(program->hasLogged(logevent::askedDesktop)) << program->recentWords();
    EXPECT_TRUE(isLocked());

    ASSERT_TRUE(program->order("scene live-normal 4"));
    ASSERT_TRUE(comesBackUntil([this] { return program->hasLogged(logevent::unlocked); }))
        << program->recentWords();
    EXPECT_TRUE(program->hasLogged(logevent::askedDesktop)) << program->recentWords();
    EXPECT_FALSE(program->hasLogged(logevent::typed));
    EXPECT_FALSE(isLocked());
}

/// KWin's displays in a window, like its virtual ones, say that they cannot be switched off.
class DesktopDisplaysTest : public DesktopTest {
  protected:
    /// As GNOME's settings daemon does, which is not here.
    void savePower(int mode) {
        const QString name = "org.gnome.Mutter.DisplayConfig";
        bus->call(name, "/org/gnome/Mutter/DisplayConfig", "org.freedesktop.DBus.Properties", "Set",
                  {name, "PowerSaveMode", QVariant::fromValue(QDBusVariant(mode))});
    }
};

TEST_P(DesktopDisplaysTest, tellTheirSleepAndWakeBehindTheLock) {
    DesktopSession session(places(), mainThread);
    std::vector<LockEvent> heard;
    session.lockEvents().onEvent = [&](LockEvent event) { heard.push_back(event); };
    session.lockEvents().start();
    session.start();
    ASSERT_NO_FATAL_FAILURE(lock());
    ASSERT_TRUE(loop.runUntil([&] { return !heard.empty(); }));
    ASSERT_THAT(heard, ElementsAre(LockEvent::screenLocked));
    heard.clear();
    for (const int mode : {3, 1}) {
        savePower(mode);
        ASSERT_TRUE(loop.runUntil([&] { return session.lockEvents().isSleeping(); }));
        savePower(0);
        ASSERT_TRUE(loop.runUntil([&] { return !session.lockEvents().isSleeping(); }));
    }
    EXPECT_THAT(heard, ElementsAre(LockEvent::willSleep, LockEvent::wake, LockEvent::willSleep,
                                   LockEvent::wake));
    EXPECT_TRUE(isLocked());
}

TEST_P(DesktopTest, tellsWhenSomebodyComesBackToTheLockScreen) {
    DesktopSession session(places(), mainThread);
    session.start();
    ASSERT_NO_FATAL_FAILURE(lock());
    for (int times = 0; times < 2; ++times) {
        ASSERT_TRUE(loop.runUntil([&] {
            return session.inputIdle().sinceLastInput().value_or(TimeInterval::zero()) >
                   IdleEdges::pause;
        }));
        touch();
        ASSERT_TRUE(loop.runUntil(
            [&] { return session.inputIdle().sinceLastInput() == TimeInterval::zero(); }));
    }
}

INSTANTIATE_TEST_SUITE_P(Real, DesktopDisplaysTest, testing::Values(gnome),
                         [](const auto& test) { return std::string(test.param.name); });
INSTANTIATE_TEST_SUITE_P(Real, DesktopTest, testing::Values(gnome, kde),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace marrowby
