// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11ScreenCover.h"

#include "Platforms/Linux/X11/LockerWindows.h"
#include "Platforms/Linux/X11/X11Screen.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace marrowby {
namespace {

struct Shown {
    X11ScreenCover::Window window;
    Rect frame;
};

bool isServersOwn(const XcbConnection& connection, xcb_window_t window) {
    return (window & ~xcb_get_setup(connection.get())->resource_id_mask) == 0;
}

/// Viewable children of the root, topmost first.
std::vector<Shown> shownWindows(const XcbConnection& connection) {
    xcb_connection_t* const xcb = connection.get();
    std::vector<Shown> shown;
    const auto tree =
        connection.reply<xcb_query_tree_reply>(xcb_query_tree(xcb, connection.root()));
    if (!tree) return shown;
    struct Request {
        xcb_window_t window;
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_geometry_cookie_t geometry;
    };
    std::vector<Request> requests;
    for (const auto window :
         std::span(xcb_query_tree_children(tree.get()),
                   static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())))) {
        if (isServersOwn(connection, window)) continue;
        requests.push_back({.window = window,
                            .attributes = xcb_get_window_attributes(xcb, window),
                            .geometry = xcb_get_geometry(xcb, window)});
    }
    for (const auto& request : requests) {
        const auto attributes =
            connection.reply<xcb_get_window_attributes_reply>(request.attributes);
        const auto geometry = connection.reply<xcb_get_geometry_reply>(request.geometry);
        if (!attributes || !geometry || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
            attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT) {
            continue;
        }
        const double borders = 2.0 * geometry->border_width;
        shown.push_back({.window = {.id = request.window,
                                    .overrideRedirect = attributes->override_redirect != 0},
                         .frame = {.x = double(geometry->x),
                                   .y = double(geometry->y),
                                   .width = geometry->width + borders,
                                   .height = geometry->height + borders}});
    }
    std::ranges::reverse(shown);
    return shown;
}

}  // namespace

std::vector<std::optional<X11ScreenCover::Window>> X11ScreenCover::read(
    const XcbConnection& connection) {
    const auto shown = shownWindows(connection);
    std::vector<std::optional<Window>> covering;
    for (const Rect& monitor : X11Screen::monitors(connection)) {
        const auto found = std::ranges::find_if(
            shown, [&](const Shown& one) { return covers(one.frame, monitor); });
        covering.push_back(found == shown.end() ? std::nullopt : std::optional(found->window));
    }
    return covering;
}

}  // namespace marrowby
