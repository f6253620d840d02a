// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Session/DesktopSession.h"
#include "Platforms/Linux/Session/GnomeDisplays.h"
#include "Simulation/Desktop/PrivateBus.h"
#include "Tests/Platforms/Linux/QtLoop.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "Tests/Platforms/Linux/Wayland/ScriptedCompositor.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QVariantMap>
#include <algorithm>
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
using testing::ElementsAreArray;
using testing::IsEmpty;
using enum LockEvent;

constexpr const char* shellName = "org.gnome.Shell";
constexpr const char* displaysName = "org.gnome.Mutter.DisplayConfig";
constexpr const char* path = "/org/gnome/Mutter/DisplayConfig";
constexpr int on = 0;
constexpr int off = 3;

/// A program on the bus with GNOME's object of the displays.
class ScriptedShell final : public QDBusVirtualObject {
  public:
    ScriptedShell(const std::string& address, const QString& id, std::optional<int> mode,
                  const char* name = shellName)
        : mode_(mode),
          id_(id),
          name_(name),
          bus_(QDBusConnection::connectToBus(QString::fromStdString(address), id)) {
        bus_.registerVirtualObject(path, this);
        EXPECT_TRUE(bus_.registerService(name));
    }
    ScriptedShell(const ScriptedShell&) = delete;
    ScriptedShell& operator=(const ScriptedShell&) = delete;
    ~ScriptedShell() override {
        // Qt's thread closes the connection, and then still looks at what is registered.
        bus_.unregisterObject(path);
        QDBusConnection::disconnectFromBus(id_);
    }

    void say(const QVariant& mode, const char* interface = displaysName) {
        if (mode_) mode_ = mode.toInt();
        auto signal = QDBusMessage::createSignal(path, "org.freedesktop.DBus.Properties",
                                                 "PropertiesChanged");
        signal.setArguments({interface, QVariantMap{{"PowerSaveMode", mode}}, QStringList()});
        EXPECT_TRUE(bus_.send(signal));
    }
    [[nodiscard]] bool wasAsked() const { return !questions_.empty(); }
    /// Also for questions of long ago.
    void answer(int mode) {
        for (const QDBusMessage& question : std::exchange(questions_, {}))
            bus_.send(question.createReply(QVariant::fromValue(QDBusVariant(mode))));
    }
    /// Whether the bus has passed on all that was said.
    [[nodiscard]] bool isRouted() const {
        return bus_.interface()->isServiceRegistered("org.freedesktop.DBus");
    }
    /// At once, for another to take it.
    void giveUpItsName() { bus_.unregisterService(name_); }

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*bus*/) override {
        if (message.member() != "Get") return false;
        questions_.push_back(message);
        if (mode_) answer(*mode_);
        return true;
    }

  private:
    /// Nothing: it doesn't answer.
    std::optional<int> mode_;
    const QString id_;
    const QString name_;
    QDBusConnection bus_;
    std::vector<QDBusMessage> questions_;
};

struct DesktopDisplaysTest : testing::Test {
    QtLoop loop;
    QtMainThread mainThread;
    TemporaryFolder folder;
    std::unique_ptr<PrivateBus> bus;
    std::optional<ScriptedShell> shell;
    std::unique_ptr<ScriptedCompositor> compositor;
    std::optional<DesktopSession> session;
    std::vector<LockEvent> heard;

    void SetUp() override { qputenv("XDG_RUNTIME_DIR", folder.path().c_str()); }

    void startBus() {
        bus = PrivateBus::create(PrivateBus::Installed::unknown).value_or(nullptr);
        if (!bus) GTEST_SKIP() << "Skipped: needs dbus-daemon.";
    }
    void startShell(std::optional<int> mode) { shell.emplace(bus->address(), "shell", mode); }
    void watch() {
        heard.clear();
        session.emplace(DesktopSession::Places{.systemBus = {},
                                               .sessionBus = bus ? bus->address() : "",
                                               .display = {},
                                               .inputDevices = folder.path().string(),
                                               .isWayland = true,
                                               .waylandDisplay = compositor ? "desktop" : ""},
                        mainThread);
        session->lockEvents().onEvent = [this](LockEvent event) { heard.push_back(event); };
        session->lockEvents().start();
        session->start();
    }
    [[nodiscard]] bool until(const std::function<bool()>& condition) {
        return loop.runUntil([&] {
            if (compositor) compositor->turn();
            return condition();
        });
    }
    /// A change that counts: what was said before it has been heard, too.
    [[nodiscard]] bool sleeps() {
        return until([this] { return session->lockEvents().isSleeping(); });
    }
    [[nodiscard]] bool wakes() {
        return until([this] { return !session->lockEvents().isSleeping(); });
    }
};

TEST_F(DesktopDisplaysTest, wakeOnceWhenGnomeSwitchesThemOn) {
    startBus();
    if (IsSkipped()) return;
    startShell(on);
    watch();
    shell->say(off);
    ASSERT_TRUE(sleeps());
    shell->say(on);
    ASSERT_TRUE(wakes());
    ASSERT_THAT(heard, ElementsAre(willSleep, wake));

    const struct {
        const char* what;
        std::vector<QVariant> said;
        std::vector<LockEvent> expected;
    } cases[] = {
        {"on, again", {on, on}, {}},
        {"every way of saving", {1, 2, off, 1, on, on}, {willSleep, wake}},
        {"flaps", {off, on, off, on}, {willSleep, wake, willSleep, wake}},
        {"unknown", {-1, on, -1}, {}},
        {"unknown after off", {off, -1, on}, {willSleep, wake}},
        {"no number", {"off", true, 3U}, {}},
    };
    for (const auto& [what, said, expected] : cases) {
        SCOPED_TRACE(what);
        heard.clear();
        for (const QVariant& mode : said)
            shell->say(mode);
        shell->say(off, "org.gnome.Shell");
        shell->say(off);
        ASSERT_TRUE(until([&] { return heard.size() > expected.size(); }));
        shell->say(on);
        ASSERT_TRUE(wakes());
        std::vector<LockEvent> all = expected;
        all.insert(all.end(), {willSleep, wake});
        EXPECT_THAT(heard, ElementsAreArray(all));
    }
}

TEST_F(DesktopDisplaysTest, areAsTheShellSaysAndNobodyElse) {
    startBus();
    if (IsSkipped()) return;
    ScriptedShell stranger(bus->address(), "stranger", off, displaysName);
    startShell(off);
    GnomeDisplays ofAnotherUser(bus->address(), getuid() + 1);
    ofAnotherUser.start();
    watch();
    ASSERT_TRUE(sleeps()) << "asleep from the beginning";
    EXPECT_FALSE(ofAnotherUser.areAsleep());
    shell->say(on);
    ASSERT_TRUE(wakes());
    stranger.say(off);
    stranger.say(on);
    shell->say(off);
    ASSERT_TRUE(sleeps());
    EXPECT_THAT(heard, ElementsAre(willSleep, wake, willSleep));

    // The shell goes, and later its bus.
    shell.reset();
    ASSERT_TRUE(wakes());
    startShell(off);
    ASSERT_TRUE(sleeps());
    bus->kill();
    ASSERT_TRUE(wakes());
    EXPECT_THAT(heard, ElementsAre(willSleep, wake, willSleep, wake, willSleep, wake));
}

TEST_F(DesktopDisplaysTest, needNoAnswerAndTakeNoLateOne) {
    startBus();
    if (IsSkipped()) return;
    ScriptedShell silent(bus->address(), "silent", std::nullopt);
    watch();
    ASSERT_TRUE(until([&] { return silent.wasAsked(); }));
    silent.say(off);
    ASSERT_TRUE(sleeps());
    silent.giveUpItsName();
    ASSERT_TRUE(wakes());
    startShell(off);
    ASSERT_TRUE(sleeps());
    shell->say(on);
    ASSERT_TRUE(wakes());
    silent.answer(off);
    ASSERT_TRUE(silent.isRouted());
    shell->giveUpItsName();
    ScriptedShell later(bus->address(), "later", std::nullopt);
    ASSERT_TRUE(until([&] { return later.wasAsked(); }));
    loop.runPending();
    EXPECT_THAT(heard, ElementsAre(willSleep, wake, willSleep, wake));

    // Nobody is there any more.
    heard.clear();
    session.reset();
    later.answer(off);
    ASSERT_TRUE(later.isRouted());
    loop.runPending();
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(DesktopDisplaysTest, wakeOnceWhenKWinSwitchesTheFirstOn) {
    compositor = std::make_unique<ScriptedCompositor>("desktop");
    auto& first = compositor->addOutput();
    watch();
    ASSERT_TRUE(until([&] { return first.isBound; }));
    loop.runPending();
    EXPECT_FALSE(session->lockEvents().isSleeping()) << "another compositor";
    compositor->addPower();
    auto& second = compositor->addOutput();
    auto& television = compositor->addOutput(false);
    const auto powers = {&first, &second, &television};
    ASSERT_TRUE(until([&] {
        return std::ranges::all_of(powers, [](const auto* one) { return one->power != nullptr; });
    }));
    first.become(off);
    second.become(off);
    television.become(off);
    auto& last = compositor->addOutput();
    ASSERT_TRUE(until([&] { return last.power != nullptr; }));
    loop.runPending();
    EXPECT_THAT(heard, IsEmpty()) << "one that can't be off is on";
    ScriptedCompositor::unplug(last);
    ScriptedCompositor::unplug(television);
    ASSERT_TRUE(sleeps());
    for (int round = 0; round < 2; ++round) {
        first.become(1);
        second.become(2);
        ASSERT_TRUE(sleeps());
        second.become(on);
        ASSERT_TRUE(wakes());
        first.become(on);
        first.become(on);
        second.become(off);
        compositor->turn();
        loop.runPending();
        first.become(off);
        ASSERT_TRUE(sleeps());
    }
    EXPECT_THAT(heard, ElementsAre(willSleep, wake, willSleep, wake, willSleep));

    // Monitors that disappear when they are off, until one comes back.
    heard.clear();
    ScriptedCompositor::unplug(first);
    ScriptedCompositor::unplug(second);
    auto& again = compositor->addOutput();
    ASSERT_TRUE(wakes());
    again.become(off);
    ASSERT_TRUE(sleeps());
    compositor.reset();
    ASSERT_TRUE(wakes());
    EXPECT_THAT(heard, ElementsAre(wake, willSleep, wake));
}

}  // namespace
}  // namespace marrowby
