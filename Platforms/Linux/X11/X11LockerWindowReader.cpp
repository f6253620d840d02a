// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11LockerWindowReader.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace marrowby {
namespace {

/// Longer than any locker's name, in 4-byte units.
constexpr std::uint32_t nameLength = 64;

struct WindowRequest {
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    xcb_get_property_cookie_t names;
};

Rect frameOf(const xcb_get_geometry_reply_t& geometry) {
    const double borders = 2.0 * geometry.border_width;
    return {.x = double(geometry.x),
            .y = double(geometry.y),
            .width = geometry.width + borders,
            .height = geometry.height + borders};
}

/// WM_CLASS: two NUL-terminated strings.
void readNames(const xcb_get_property_reply_t& property, LockerWindows::Window& window) {
    if (property.type != XCB_ATOM_STRING || property.format != 8) return;
    std::string_view names(static_cast<const char*>(xcb_get_property_value(&property)),
                           static_cast<std::size_t>(xcb_get_property_value_length(&property)));
    const std::size_t end = names.find('\0');
    window.instanceName = names.substr(0, end);
    if (end == std::string_view::npos) return;
    names.remove_prefix(end + 1);
    window.className = names.substr(0, names.find('\0'));
}

/// The first item of _SCREENSAVER_STATUS is an atom, whatever type the property declares; 0 means
/// off.
xcb_atom_t stateAtom(const xcb_get_property_reply_t* property) {
    if (!property || property->format != 32 || xcb_get_property_value_length(property) < 4) {
        return XCB_ATOM_NONE;
    }
    return *static_cast<const xcb_atom_t*>(xcb_get_property_value(property));
}

}  // namespace

X11LockerWindowReader::X11LockerWindowReader(const XcbConnection& connection)
    : connection_(connection),
      programs_(connection),
      screenSaverStatus_(connection.atom("_SCREENSAVER_STATUS")) {}

std::optional<LockerWindows> X11LockerWindowReader::read() const {
    xcb_connection_t* const xcb = connection_.get();
    const xcb_window_t root = connection_.root();
    // All requests go out before the first wait.
    const auto geometryCookie = xcb_get_geometry(xcb, root);
    const auto statusCookie =
        xcb_get_property(xcb, 0, root, screenSaverStatus_, XCB_GET_PROPERTY_TYPE_ANY, 0, 1);
    const auto treeCookie = xcb_query_tree(xcb, root);

    const auto rootGeometry = connection_.reply<xcb_get_geometry_reply>(geometryCookie);
    const auto status = connection_.reply<xcb_get_property_reply>(statusCookie);
    const auto tree = connection_.reply<xcb_query_tree_reply>(treeCookie);
    if (!rootGeometry || !tree) return std::nullopt;

    LockerWindows lockers{
        .screen = {.width = double(rootGeometry->width), .height = double(rootGeometry->height)},
        .windows = {},
        .screenSaverState = {},
        .hasScreenSaver = status && status->format == 32};
    const std::span children(xcb_query_tree_children(tree.get()),
                             static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));
    std::vector<WindowRequest> requests;
    requests.reserve(children.size());
    for (const xcb_window_t child : children) {
        requests.push_back({.attributes = xcb_get_window_attributes(xcb, child),
                            .geometry = xcb_get_geometry(xcb, child),
                            .names = xcb_get_property(xcb, 0, child, XCB_ATOM_WM_CLASS,
                                                      XCB_ATOM_STRING, 0, nameLength)});
    }
    for (std::size_t i = 0; i < requests.size(); ++i) {
        const WindowRequest& request = requests[i];
        const auto attributes =
            connection_.reply<xcb_get_window_attributes_reply>(request.attributes);
        const auto geometry = connection_.reply<xcb_get_geometry_reply>(request.geometry);
        const auto names = connection_.reply<xcb_get_property_reply>(request.names);
        // Destroyed meanwhile.
        if (!attributes || !geometry || !names) continue;
        LockerWindows::Window window{.instanceName = {},
                                     .className = {},
                                     .overrideRedirect = attributes->override_redirect != 0,
                                     .mapped = attributes->map_state == XCB_MAP_STATE_VIEWABLE,
                                     .frame = frameOf(*geometry),
                                     .id = children[i]};
        readNames(*names, window);
        const bool isNamed = !window.instanceName.empty() || !window.className.empty();
        if (window.mapped && window.overrideRedirect && !isNamed) {
            if (auto program = programs_.behind(window.id))
                window.program = std::move(program->name);
        }
        lockers.windows.push_back(std::move(window));
    }

    if (const xcb_atom_t state = stateAtom(status.get()); state != XCB_ATOM_NONE) {
        const auto name = connection_.reply<xcb_get_atom_name_reply>(xcb_get_atom_name(xcb, state));
        if (name) {
            lockers.screenSaverState.emplace(
                xcb_get_atom_name_name(name.get()),
                static_cast<std::size_t>(xcb_get_atom_name_name_length(name.get())));
        }
    }
    if (connection_.hasError()) return std::nullopt;
    return lockers;
}

}  // namespace marrowby
