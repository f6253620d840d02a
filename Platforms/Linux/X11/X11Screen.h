// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"
#include "UnlockCore/Platform/WindowServer.h"

#include <optional>
#include <string_view>
#include <vector>

namespace marrowby {

/// The primary monitor of an X display, and its pixels per point.
struct X11Screen {
    Rect pixels;
    double scale = 1;

    /// `nullopt` on a lost display.
    [[nodiscard]] static std::optional<X11Screen> main(const XcbConnection& connection);

    /// All monitors in pixels, or the root window when RandR reports none. Empty on a lost display.
    [[nodiscard]] static std::vector<Rect> monitors(const XcbConnection& connection);

    /// By the connectors' names.
    [[nodiscard]] static ActiveDisplays activeDisplays(const XcbConnection& connection);
    /// “eDP-1”, “LVDS1”, “DSI-1”: a panel of the computer itself.
    [[nodiscard]] static bool isBuiltIn(std::string_view connector);

    [[nodiscard]] ScreenGeometry geometry() const {
        return {.frame = {.x = pixels.x / scale,
                          .y = pixels.y / scale,
                          .width = pixels.width / scale,
                          .height = pixels.height / scale},
                .notch = {}};
    }
};

}  // namespace marrowby
