// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/PrivateSession.h"

#include <QString>
#include <QVariantList>
#include <string_view>
#include <system_error>
#include <utility>

#include <signal.h>

namespace marrowby {

namespace {

constexpr std::string_view keyringPassword = "rehearsal";

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
    if (auto started = session.startPrograms(); !started) return std::unexpected(started.error());
    return session;
}

std::vector<std::string> PrivateSession::displayVariables() const {
    std::vector<std::string> variables = homeVariables(home());
    variables.insert(
        variables.end(),
        {"DISPLAY=" + displayName(), "WAYLAND_DISPLAY=", "XDG_SESSION_TYPE=x11",
         // Not the machine’s own session.
         "DBUS_SYSTEM_BUS_ADDRESS=unix:path=" + (home() / "no-system-bus").string(),
         "LC_ALL=C.UTF-8", "LANGUAGE=", "QT_QPA_PLATFORM=xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1",
         "QT_SCALE_FACTOR=" + std::to_string(scale_)});
    return variables;
}

std::vector<std::string> PrivateSession::environment() const {
    std::vector<std::string> environment = displayVariables();
    environment.push_back("DBUS_SESSION_BUS_ADDRESS=" + busAddress());
    return environment;
}

std::optional<std::string> PrivateSession::failure() const {
    if (!bus_->isRunning()) return "The private session’s bus has ended.";
    if (!keyring_ || !keyring_->isRunning()) return "The private session’s keyring has ended.";
    if (!windowManager_ || !windowManager_->isRunning())
        return "The private session’s window manager has ended.";
    return std::nullopt;
}

std::expected<void, std::string> PrivateSession::startPrograms() {
    auto created = PrivateBus::create(PrivateBus::Installed::started, displayVariables());
    if (!created) return std::unexpected(created.error());
    bus_ = *std::move(created);
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    if (!bus_->call(bus, QStringLiteral("/org/freedesktop/DBus"), bus,
                    QStringLiteral("StartServiceByName"), {QStringLiteral("org.a11y.Bus"), 0U})
             .isValid()) {
        return std::unexpected(
            "Assistive technology can’t be started: at-spi2-core is not installed.");
    }
    auto keyring = PrivateKeyring::start(*bus_, home(), keyringPassword);
    if (!keyring) return std::unexpected(keyring.error());
    keyring_.emplace(*std::move(keyring));
    auto manager = ChildProcess::start({.arguments = {"openbox", "--sm-disable"},
                                        .environment = environment(),
                                        .endSignal = SIGTERM});
    if (!manager) return std::unexpected(manager.error());
    windowManager_.emplace(*std::move(manager));
    return {};
}

}  // namespace marrowby
