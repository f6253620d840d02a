// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/GraphicalSession.h"

#include "Platforms/Linux/X11/XcbConnection.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <QLibraryInfo>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace marrowby::graphicalsession {

namespace {

using Answer = std::expected<void, std::string>;

constexpr auto needsSession = Phrase("Marrowby Unlock runs in a graphical session. {problem}");

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

Answer x11() {
    const std::string display = environment("DISPLAY");
    if (display.empty()) return std::unexpected(translated("DISPLAY is not set here."));
    const auto connection = XcbConnection::create(display);
    if (!connection) return std::unexpected(connection.error());
    return {};
}

bool accepts(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string& name = path.native();
    if (name.size() >= sizeof address.sun_path) return false;
    std::memcpy(address.sun_path, name.c_str(), name.size());
    const int connection = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connection < 0) return false;
    const bool isAccepted =
        ::connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(connection);
    return isAccepted;
}

bool answers(const std::string& display) {
    // An absolute name replaces the folder.
    return accepts(std::filesystem::path(environment("XDG_RUNTIME_DIR")) / display);
}

bool hasWaylandPlugin() {
    const std::filesystem::path plugins =
        QLibraryInfo::path(QLibraryInfo::PluginsPath).toStdString();
    std::error_code error;
    for (const auto& file : std::filesystem::directory_iterator(plugins / "platforms", error)) {
        if (file.path().filename().string().starts_with("libqwayland")) return true;
    }
    return false;
}

Answer wayland() {
    const std::string display = environment("WAYLAND_DISPLAY");
    if (display.empty()) return std::unexpected(translated("WAYLAND_DISPLAY is not set here."));
    if (!answers(display))
        return std::unexpected(
            translated("The Wayland display “{display}” doesn’t answer.", {{"display", display}}));
    if (!hasWaylandPlugin())
        return std::unexpected(
            translated("Qt’s support for Wayland isn’t installed (Debian: qt6-wayland)."));
    return {};
}

}  // namespace

void forgetStaleDisplay() {
    if (!answers(environment("WAYLAND_DISPLAY"))) ::unsetenv("WAYLAND_DISPLAY");
}

std::expected<std::string, std::string> platform() {
    const std::string chosen = environment("QT_QPA_PLATFORM");
    if (!chosen.empty() && !chosen.starts_with("xcb") && !chosen.starts_with("wayland")) return {};
    const bool mayUseX = !chosen.starts_with("wayland");
    const bool mayUseWayland = !chosen.starts_with("xcb");
    const Answer onX = mayUseX ? x11() : std::unexpected(std::string());
    const Answer onWayland = mayUseWayland ? wayland() : std::unexpected(std::string());
    if (onX && onWayland) return {};
    if (onX) return "xcb";
    if (onWayland) return "wayland";
    if (mayUseX && mayUseWayland && environment("DISPLAY").empty() &&
        environment("WAYLAND_DISPLAY").empty())
        return std::unexpected(
            translated(needsSession,
                       {{"problem", Phrase("Neither DISPLAY nor WAYLAND_DISPLAY is set here.")}}));
    const bool tellsOfX = mayUseX && !environment("DISPLAY").empty();
    return std::unexpected(
        translated(needsSession, {{"problem", tellsOfX ? onX.error() : onWayland.error()}}));
}

}  // namespace marrowby::graphicalsession
