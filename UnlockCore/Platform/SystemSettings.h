#pragma once

#include <cstdint>
#include <string>

namespace marrowby {

/// The system's own settings, and whether it opens the application with the session. Main thread.
class SystemSettings {
  public:
    enum class Pane : std::uint8_t { camera, accessibility, inputMonitoring };

    virtual ~SystemSettings() = default;
    /// In words, for a sentence.
    [[nodiscard]] virtual std::string location(Pane pane) const = 0;
    /// False where there is nothing that could be opened.
    virtual bool open(Pane pane) = 0;

    [[nodiscard]] virtual bool opensAtLogin() const = 0;
    /// False when the system refused.
    virtual bool setOpensAtLogin(bool opens) = 0;
};

/// Where a Mac has them.
namespace macsettings {

inline constexpr const char* openAtAddress =
    "x-apple.systempreferences:com.apple.preference.security?";

struct Place {
    /// For the user.
    const char* location;
    /// The end of the address.
    const char* anchor;
    /// The system puts the application into its list when it is asked for trust.
    bool asksForTrust;
};

[[nodiscard]] constexpr Place place(SystemSettings::Pane pane) {
    switch (pane) {
        case SystemSettings::Pane::camera:
            return {"System Settings › Privacy & Security › Camera", "Privacy_Camera", false};
        case SystemSettings::Pane::accessibility:
            return {"System Settings › Privacy & Security › Accessibility", "Privacy_Accessibility",
                    true};
        case SystemSettings::Pane::inputMonitoring:
            return {"System Settings › Privacy & Security › Input Monitoring",
                    "Privacy_ListenEvent", false};
    }
    return {};
}

}  // namespace macsettings

}  // namespace marrowby
