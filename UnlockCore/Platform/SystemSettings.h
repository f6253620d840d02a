#pragma once

#include <cstdint>

namespace marrowby {

/// The system's own settings, and whether it opens the application with the session. Main thread.
class SystemSettings {
  public:
    enum class Pane : std::uint8_t { camera, accessibility, inputMonitoring };

    virtual ~SystemSettings() = default;
    /// False where there is nothing that could be opened.
    virtual bool open(Pane pane) = 0;

    [[nodiscard]] virtual bool opensAtLogin() const = 0;
    /// False when the system refused.
    virtual bool setOpensAtLogin(bool opens) = 0;
};

/// The panes' addresses on macOS.
namespace macsettings {

inline constexpr const char* openAtAddress =
    "x-apple.systempreferences:com.apple.preference.security?";

struct Place {
    /// The end of the address.
    const char* anchor;
    /// Asking for trust adds the application to the pane's list.
    bool asksForTrust;
};

[[nodiscard]] constexpr Place place(SystemSettings::Pane pane) {
    switch (pane) {
        case SystemSettings::Pane::camera:
            return {"Privacy_Camera", false};
        case SystemSettings::Pane::accessibility:
            return {"Privacy_Accessibility", true};
        case SystemSettings::Pane::inputMonitoring:
            return {"Privacy_ListenEvent", false};
    }
    return {};
}

}  // namespace macsettings

}  // namespace marrowby
