// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/PanelPlacement.h"
#include "Platforms/Linux/X11/XcbConnection.h"

#include <QImage>
#include <cstdint>
#include <memory>
#include <span>

namespace marrowby {

/// A mapped, click-through window in one placement. Destroying it also restores the composite
/// overlay window. The connection outlives it.
class XPanelWindow {
  public:
    /// In pixels of the root window.
    struct Frame {
        std::int16_t x = 0;
        std::int16_t y = 0;
        std::uint16_t width = 0;
        std::uint16_t height = 0;
        friend bool operator==(const Frame&, const Frame&) = default;
    };

    /// Null when the display lacks an extension or the placement is `nowhere`.
    [[nodiscard]] static std::unique_ptr<XPanelWindow> create(const XcbConnection& connection,
                                                              PanelPlacement placement,
                                                              const Frame& frame);
    XPanelWindow(const XPanelWindow&) = delete;
    XPanelWindow& operator=(const XPanelWindow&) = delete;
    ~XPanelWindow();

    [[nodiscard]] xcb_window_t id() const { return window_; }
    [[nodiscard]] PanelPlacement placement() const { return placement_; }
    [[nodiscard]] const Frame& frame() const { return frame_; }

    /// Premultiplied, of the frame's size.
    void show(const QImage& picture) const;
    void raise() const;

  private:
    XPanelWindow(const XcbConnection& connection, PanelPlacement placement, const Frame& frame)
        : connection_(connection), placement_(placement), frame_(frame) {}
    [[nodiscard]] bool open();
    void setShape(std::span<const xcb_rectangle_t> shape) const;

    const XcbConnection& connection_;
    const PanelPlacement placement_;
    const Frame frame_;
    xcb_window_t overlay_ = XCB_NONE;
    xcb_colormap_t colors_ = XCB_NONE;
    xcb_window_t window_ = XCB_NONE;
    xcb_pixmap_t pixels_ = XCB_NONE;
    xcb_gcontext_t context_ = XCB_NONE;
};

}  // namespace marrowby
