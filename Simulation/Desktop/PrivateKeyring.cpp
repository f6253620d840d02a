// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/PrivateKeyring.h"

#include "Simulation/Desktop/PrivateFolder.h"

#include <QDBusObjectPath>
#include <QList>
#include <QVariant>
#include <vector>

namespace marrowby {

std::expected<PrivateKeyring, std::string> PrivateKeyring::start(const PrivateBus& bus,
                                                                 const std::filesystem::path& home,
                                                                 std::string_view password) {
    ChildProcess::Program program{
        .arguments = {"gnome-keyring-daemon", "--foreground", "--components=secrets",
                      "--control-directory", home.string()},
        .environment = homeVariables(home)};
    // Without a display it cannot show a prompt.
    program.environment.insert(program.environment.end(), {"DISPLAY=", "WAYLAND_DISPLAY="});
    if (!password.empty()) program.arguments.emplace_back("--unlock");
    auto daemon = bus.serve("org.freedesktop.secrets", std::move(program), password);
    if (!daemon) return std::unexpected(daemon.error());
    return PrivateKeyring(bus, *std::move(daemon));
}

void PrivateKeyring::lock() const {
    const QList<QDBusObjectPath> keyrings{
        QDBusObjectPath("/org/freedesktop/secrets/aliases/default")};
    bus_->call("org.freedesktop.secrets", "/org/freedesktop/secrets",
               "org.freedesktop.Secret.Service", "Lock", {QVariant::fromValue(keyrings)});
}

}  // namespace marrowby
