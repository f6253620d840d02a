// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/SystemSettings.h"

namespace marrowby {

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
