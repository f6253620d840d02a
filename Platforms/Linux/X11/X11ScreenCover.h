#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <optional>
#include <vector>

namespace marrowby {

/// The windows that hide the rest of a display from its user. For the adapters of this folder only.
struct X11ScreenCover {
    struct Window {
        xcb_window_t id = XCB_NONE;
        bool overrideRedirect = false;
    };
    /// For each monitor the topmost window that covers it; nothing where none does. Empty on a lost
    /// display. Windows of the server's own, such as a compositor paints on, are passed over.
    [[nodiscard]] static std::vector<std::optional<Window>> read(const XcbConnection& connection);
};

}  // namespace marrowby
