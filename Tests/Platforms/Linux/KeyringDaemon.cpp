#include "Tests/Platforms/Linux/KeyringDaemon.h"

#include <QDBusObjectPath>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QVariant>
#include <utility>

namespace marrowby {

std::unique_ptr<KeyringDaemon> KeyringDaemon::start(const PrivateBus& bus,
                                                    const std::filesystem::path& home,
                                                    const std::string& password) {
    const QString daemon = "gnome-keyring-daemon";
    if (QStandardPaths::findExecutable(daemon).isEmpty()) return nullptr;
    auto environment = QProcessEnvironment::systemEnvironment();
    const auto folder = QString::fromStdString(home.string());
    for (const char* name : {"HOME", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME"})
        environment.insert(name, folder);
    // So that it cannot show a prompt.
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    QStringList arguments{"--foreground", "--components=secrets", "--control-directory", folder};
    if (!password.empty()) arguments << "--unlock";
    auto program = bus.serve("org.freedesktop.secrets", daemon, arguments, environment,
                             QByteArray::fromStdString(password));
    if (!program) return nullptr;
    return std::unique_ptr<KeyringDaemon>(new KeyringDaemon(bus, std::move(program)));
}

void KeyringDaemon::lock() const {
    const QList<QDBusObjectPath> keyrings{
        QDBusObjectPath("/org/freedesktop/secrets/aliases/default")};
    bus_.call("org.freedesktop.secrets", "/org/freedesktop/secrets",
              "org.freedesktop.Secret.Service", "Lock", {QVariant::fromValue(keyrings)});
}

}  // namespace marrowby
