// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/XPanelWindow.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include <xcb/composite.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

namespace marrowby {
namespace {

constexpr std::uint8_t depth = 32;
constexpr std::size_t bytesPerPixel = 4;
/// Size of a PutImage request without its data.
constexpr std::size_t putImageHead = 24;

/// The 32-bit visual with alpha.
xcb_visualid_t blendedVisual(const xcb_screen_t& screen) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0;
         xcb_depth_next(&depths)) {
        if (depths.data->depth != depth) continue;
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals)) {
            if (visuals.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR) return visuals.data->visual_id;
        }
    }
    return XCB_NONE;
}

bool isPresent(const XcbConnection& connection, xcb_extension_t& extension) {
    const auto* data = xcb_get_extension_data(connection.get(), &extension);
    return data && data->present;
}

/// Rectangles of pixels with at least this alpha; equal adjacent rows are merged.
std::vector<xcb_rectangle_t> shapeOf(const QImage& picture, int leastAlpha) {
    std::vector<xcb_rectangle_t> shape;
    std::size_t above = 0;
    for (int y = 0; y < picture.height(); ++y) {
        const std::span pixels(reinterpret_cast<const QRgb*>(picture.constScanLine(y)),
                               static_cast<std::size_t>(picture.width()));
        const std::size_t row = shape.size();
        const auto isInside = [&](QRgb pixel) { return qAlpha(pixel) >= leastAlpha; };
        for (auto at = pixels.begin(); at != pixels.end();) {
            const auto begin = std::find_if(at, pixels.end(), isInside);
            at = std::find_if_not(begin, pixels.end(), isInside);
            if (begin == at) continue;
            shape.push_back({.x = static_cast<std::int16_t>(begin - pixels.begin()),
                             .y = static_cast<std::int16_t>(y),
                             .width = static_cast<std::uint16_t>(at - begin),
                             .height = 1});
        }
        const std::span last(shape.begin() + static_cast<std::ptrdiff_t>(above),
                             shape.begin() + static_cast<std::ptrdiff_t>(row));
        const std::span here(shape.begin() + static_cast<std::ptrdiff_t>(row), shape.end());
        const bool isSame =
            std::ranges::equal(last, here, [y](const xcb_rectangle_t& a, const xcb_rectangle_t& b) {
                return a.x == b.x && a.width == b.width && a.y + a.height == y;
            });
        if (isSame && !here.empty()) {
            for (xcb_rectangle_t& rectangle : last)
                ++rectangle.height;
            shape.resize(row);
        } else {
            above = row;
        }
    }
    return shape;
}

/// A server-side region, destroyed with this object.
class Region {
  public:
    Region(const XcbConnection& connection, std::span<const xcb_rectangle_t> rectangles)
        : connection_(connection), id_(xcb_generate_id(connection.get())) {
        xcb_xfixes_create_region(connection.get(), id_,
                                 static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
    }
    Region(const Region&) = delete;
    Region& operator=(const Region&) = delete;
    ~Region() { xcb_xfixes_destroy_region(connection_.get(), id_); }

    void cut(xcb_window_t window, xcb_shape_sk_t kind, std::int16_t x, std::int16_t y) const {
        xcb_xfixes_set_window_shape_region(connection_.get(), window,
                                           static_cast<xcb_shape_kind_t>(kind), x, y, id_);
    }

  private:
    const XcbConnection& connection_;
    xcb_xfixes_region_t id_;
};

}  // namespace

std::unique_ptr<XPanelWindow> XPanelWindow::create(const XcbConnection& connection,
                                                   PanelPlacement placement, const Frame& frame) {
    std::unique_ptr<XPanelWindow> window(new XPanelWindow(connection, placement, frame));
    if (!window->open()) return nullptr;
    return window;
}

bool XPanelWindow::open() {
    xcb_connection_t* const xcb = connection_.get();
    const xcb_visualid_t visual = blendedVisual(connection_.screen());
    if (placement_ == PanelPlacement::nowhere || visual == XCB_NONE ||
        !isPresent(connection_, xcb_xfixes_id))
        return false;
    // Regions need version 2.
    if (!connection_.reply<xcb_xfixes_query_version_reply>(xcb_xfixes_query_version(xcb, 5, 0)))
        return false;

    xcb_window_t parent = connection_.root();
    if (placement_ == PanelPlacement::shapedInOverlay) {
        if (!isPresent(connection_, xcb_composite_id)) return false;
        (void)connection_.reply<xcb_composite_query_version_reply>(
            xcb_composite_query_version(xcb, 0, 4));
        // The overlay covers the screen at once: the server grab hides it and its input until it is
        // shaped.
        xcb_grab_server(xcb);
        const auto answer = connection_.reply<xcb_composite_get_overlay_window_reply>(
            xcb_composite_get_overlay_window(xcb, connection_.root()));
        if (answer) {
            overlay_ = answer->overlay_win;
            const Region nothing(connection_, {});
            nothing.cut(overlay_, XCB_SHAPE_SK_BOUNDING, 0, 0);
            nothing.cut(overlay_, XCB_SHAPE_SK_INPUT, 0, 0);
        }
        xcb_ungrab_server(xcb);
        if (overlay_ == XCB_NONE) return false;
        parent = overlay_;
    }

    colors_ = xcb_generate_id(xcb);
    xcb_create_colormap(xcb, XCB_COLORMAP_ALLOC_NONE, colors_, connection_.root(), visual);
    pixels_ = xcb_generate_id(xcb);
    xcb_create_pixmap(xcb, depth, pixels_, connection_.root(), frame_.width, frame_.height);
    context_ = xcb_generate_id(xcb);
    xcb_create_gc(xcb, context_, pixels_, 0, nullptr);
    window_ = xcb_generate_id(xcb);
    xcb_create_window_value_list_t values{};
    values.override_redirect = 1;
    values.colormap = colors_;
    xcb_create_window_aux(
        xcb, depth, window_, parent, frame_.x, frame_.y, frame_.width, frame_.height, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
        &values);
    setShape({});
    const Region nothing(connection_, {});
    nothing.cut(window_, XCB_SHAPE_SK_INPUT, 0, 0);
    xcb_map_window(xcb, window_);
    connection_.flush();
    return true;
}

XPanelWindow::~XPanelWindow() {
    xcb_connection_t* const xcb = connection_.get();
    if (window_ != XCB_NONE) {
        xcb_destroy_window(xcb, window_);
        xcb_free_gc(xcb, context_);
        xcb_free_pixmap(xcb, pixels_);
        xcb_free_colormap(xcb, colors_);
    }
    if (overlay_ != XCB_NONE) {
        for (const auto kind : {XCB_SHAPE_SK_BOUNDING, XCB_SHAPE_SK_INPUT}) {
            xcb_xfixes_set_window_shape_region(xcb, overlay_, static_cast<xcb_shape_kind_t>(kind),
                                               0, 0, XCB_NONE);
        }
        xcb_composite_release_overlay_window(xcb, connection_.root());
    }
    // A round trip, so that closing the connection next does not drop the requests.
    (void)connection_.reply<xcb_get_input_focus_reply>(xcb_get_input_focus(xcb));
}

void XPanelWindow::show(const QImage& picture) const {
    xcb_connection_t* const xcb = connection_.get();
    const auto stride = static_cast<std::size_t>(picture.bytesPerLine());
    const std::size_t room = xcb_get_maximum_request_length(xcb) * std::size_t{4} - putImageHead;
    const int rows = std::max(1, static_cast<int>(room / stride));
    for (int y = 0; y < picture.height(); y += rows) {
        const int height = std::min(rows, picture.height() - y);
        xcb_put_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, pixels_, context_,
                      static_cast<std::uint16_t>(stride / bytesPerPixel),
                      static_cast<std::uint16_t>(height), 0, static_cast<std::int16_t>(y), 0, depth,
                      static_cast<std::uint32_t>(static_cast<std::size_t>(height) * stride),
                      picture.constScanLine(y));
    }
    // The server repaints exposed areas from the background pixmap.
    xcb_change_window_attributes(xcb, window_, XCB_CW_BACK_PIXMAP, &pixels_);
    setShape(shapeOf(picture, placement_ == PanelPlacement::blendedOnRoot ? 1 : 128));
    xcb_clear_area(xcb, 0, window_, 0, 0, 0, 0);
    connection_.flush();
}

void XPanelWindow::setShape(std::span<const xcb_rectangle_t> shape) const {
    const Region region(connection_, shape);
    region.cut(window_, XCB_SHAPE_SK_BOUNDING, 0, 0);
    if (overlay_ != XCB_NONE) region.cut(overlay_, XCB_SHAPE_SK_BOUNDING, frame_.x, frame_.y);
}

void XPanelWindow::raise() const {
    if (placement_ == PanelPlacement::shapedInOverlay) return;
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection_.get(), window_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    connection_.flush();
}

}  // namespace marrowby
