#include "Platforms/Linux/Session/GraphicalSession.h"

#include "Platforms/Linux/X11/XcbConnection.h"

#include <cstdlib>

namespace marrowby::graphicalsession {

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

}  // namespace

std::optional<std::string> problem() {
    // Qt uses another platform plugin, or Wayland.
    if (!environment("QT_QPA_PLATFORM").empty() || !environment("WAYLAND_DISPLAY").empty())
        return std::nullopt;
    const std::string display = environment("DISPLAY");
    if (display.empty())
        return "Marrowby Unlock runs in a graphical session: neither DISPLAY nor WAYLAND_DISPLAY "
               "is set here.";
    const auto connection = XcbConnection::create(display);
    if (!connection) return "Marrowby Unlock runs in a graphical session. " + connection.error();
    return std::nullopt;
}

}  // namespace marrowby::graphicalsession
