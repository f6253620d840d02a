// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <optional>
#include <vector>

namespace marrowby {

struct X11ScreenCover {
    struct Window {
        xcb_window_t id = XCB_NONE;
        bool overrideRedirect = false;
    };
    /// One per monitor; `nullopt` where no window covers it. Skips the server's own windows, such
    /// as the composite overlay. Empty on a lost display.
    [[nodiscard]] static std::vector<std::optional<Window>> read(const XcbConnection& connection);
};

}  // namespace marrowby
