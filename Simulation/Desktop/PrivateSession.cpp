#include "Simulation/Desktop/PrivateSession.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QThread>
#include <QVariant>
#include <string_view>
#include <utility>

#include <signal.h>
#include <unistd.h>

namespace marrowby {

namespace {

constexpr int startMilliseconds = 10'000;
constexpr std::string_view keyringPassword = "rehearsal";

/// Has the bus start the service; false where it can't.
bool canStart(const std::string& busAddress, const QString& service) {
    const QString name = QStringLiteral("private-session-start");
    auto bus = QDBusConnection::connectToBus(QString::fromStdString(busAddress), name);
    auto message = QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                  "org.freedesktop.DBus", "StartServiceByName");
    message.setArguments({service, 0U});
    const auto reply = bus.call(message, QDBus::Block, startMilliseconds);
    QDBusConnection::disconnectFromBus(name);
    return reply.type() == QDBusMessage::ReplyMessage;
}

bool hasOwner(QDBusConnection& bus, const std::string& service) {
    auto message = QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                  "org.freedesktop.DBus", "NameHasOwner");
    message.setArguments({QString::fromStdString(service)});
    return bus.call(message, QDBus::Block, startMilliseconds).arguments().value(0).toBool();
}

}  // namespace

std::expected<PrivateSession, std::string> PrivateSession::create(
    const std::filesystem::path& formerHome, const PrivateScreen& screen) {
    auto home = PrivateFolder::create();
    if (!home) return std::unexpected(home.error());
    std::error_code error;
    if (!formerHome.empty()) {
        std::filesystem::copy(formerHome, home->path(), std::filesystem::copy_options::recursive,
                              error);
    }
    if (error) return std::unexpected("“" + formerHome.string() + "” can’t be copied.");
    auto desktop = PrivateDesktop::create(screen);
    if (!desktop) return std::unexpected(desktop.error());
    PrivateSession session(*std::move(home), *std::move(desktop), screen.scale);
    for (const auto start : {&PrivateSession::startBus, &PrivateSession::startKeyring,
                             &PrivateSession::startWindowManager}) {
        if (auto started = (session.*start)(); !started) return std::unexpected(started.error());
    }
    return session;
}

std::vector<std::string> PrivateSession::environment() const {
    std::vector<std::string> environment{
        "DISPLAY=" + displayName(), "WAYLAND_DISPLAY=", "XDG_SESSION_TYPE=x11",
        "DBUS_SESSION_BUS_ADDRESS=" + busAddress_,
        // Not the machine’s own session.
        "DBUS_SYSTEM_BUS_ADDRESS=unix:path=" + (home() / "no-system-bus").string(),
        "LC_ALL=C.UTF-8", "QT_QPA_PLATFORM=xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1",
        "QT_SCALE_FACTOR=" + std::to_string(scale_)};
    for (const char* name : {"HOME", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME"})
        environment.push_back(std::string(name) + "=" + home().string());
    return environment;
}

std::expected<void, std::string> PrivateSession::startBus() {
    busAddress_ = "unix:path=" + (home() / "bus").string();
    auto bus = ChildProcess::start({.arguments = {"dbus-daemon", "--session", "--nofork",
                                                  "--nopidfile", "--address=" + busAddress_},
                                    .environment = environment(),
                                    .endSignal = SIGTERM});
    if (!bus) return std::unexpected(bus.error());
    programs_.push_back(*std::move(bus));
    if (auto isUp = awaitOwner("org.freedesktop.DBus"); !isUp) return isUp;
    if (canStart(busAddress_, QStringLiteral("org.a11y.Bus"))) return {};
    return std::unexpected("Assistive technology can’t be started: at-spi2-core is not installed.");
}

std::expected<void, std::string> PrivateSession::startKeyring() {
    auto password = Pipe::create();
    if (!password) return std::unexpected(password.error());
    auto keyring = ChildProcess::start(
        {.arguments = {"gnome-keyring-daemon", "--foreground", "--components=secrets",
                       "--control-directory", home().string(), "--unlock"},
         .environment = environment(),
         .standardInput = password->reading.get(),
         .endSignal = SIGTERM});
    if (!keyring) return std::unexpected(keyring.error());
    programs_.push_back(*std::move(keyring));
    const auto written =
        ::write(password->writing.get(), keyringPassword.data(), keyringPassword.size());
    if (written < 0) return std::unexpected("The keyring takes no password.");
    password->writing.close();
    return awaitOwner("org.freedesktop.secrets");
}

std::expected<void, std::string> PrivateSession::startWindowManager() {
    auto manager = ChildProcess::start({.arguments = {"openbox", "--sm-disable"},
                                        .environment = environment(),
                                        .endSignal = SIGTERM});
    if (!manager) return std::unexpected(manager.error());
    programs_.push_back(*std::move(manager));
    return {};
}

std::expected<void, std::string> PrivateSession::awaitOwner(const std::string& service) const {
    const QString name = QStringLiteral("private-session");
    const QDeadlineTimer deadline(startMilliseconds);
    while (!deadline.hasExpired() && programs_.back().isRunning()) {
        auto bus = QDBusConnection::connectToBus(QString::fromStdString(busAddress_), name);
        const bool isThere = bus.isConnected() && hasOwner(bus, service);
        QDBusConnection::disconnectFromBus(name);
        if (isThere) return {};
        QThread::msleep(10);
    }
    return std::unexpected("“" + service + "” did not come up on the private session bus.");
}

}  // namespace marrowby
