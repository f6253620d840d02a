// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11Screen.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <xcb/randr.h>

namespace marrowby {
namespace {

constexpr double usualDotsPerInch = 96;
constexpr double largestScale = 4;
/// Read limit of the resource property, in 4-byte units.
constexpr std::uint32_t resourcesLength = 16'384;

/// Scale from the resource Xft.dpi, which desktops set.
double scaleOf(const XcbConnection& connection) {
    const auto property = connection.reply<xcb_get_property_reply>(
        xcb_get_property(connection.get(), 0, connection.root(), XCB_ATOM_RESOURCE_MANAGER,
                         XCB_ATOM_STRING, 0, resourcesLength));
    if (!property) return 1;
    const std::string_view resources(
        static_cast<const char*>(xcb_get_property_value(property.get())),
        static_cast<std::size_t>(xcb_get_property_value_length(property.get())));
    constexpr std::string_view name = "Xft.dpi:";
    const std::size_t found = resources.find(name);
    if (found == std::string_view::npos) return 1;
    std::string_view value = resources.substr(found + name.size());
    value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
    double dotsPerInch = usualDotsPerInch;
    std::from_chars(value.data(), value.data() + value.size(), dotsPerInch);
    return std::clamp(dotsPerInch / usualDotsPerInch, 1.0, largestScale);
}

bool hasMonitors(const XcbConnection& connection) {
    const auto* extension = xcb_get_extension_data(connection.get(), &xcb_randr_id);
    if (!extension || !extension->present) return false;
    const auto version = connection.reply<xcb_randr_query_version_reply>(
        xcb_randr_query_version(connection.get(), 1, 5));
    return version && (version->major_version > 1 || version->minor_version >= 5);
}

struct Monitor {
    Rect pixels;
    bool isPrimary = false;
};

std::vector<Monitor> monitorsOf(const XcbConnection& connection) {
    std::vector<Monitor> found;
    if (!hasMonitors(connection)) return found;
    const auto monitors = connection.reply<xcb_randr_get_monitors_reply>(
        xcb_randr_get_monitors(connection.get(), connection.root(), 1));
    if (!monitors) return found;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(monitors.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each)) {
        found.push_back({.pixels = {.x = double(each.data->x),
                                    .y = double(each.data->y),
                                    .width = double(each.data->width),
                                    .height = double(each.data->height)},
                         .isPrimary = each.data->primary != 0});
    }
    return found;
}

std::optional<Rect> wholeScreen(const XcbConnection& connection) {
    const auto root = connection.reply<xcb_get_geometry_reply>(
        xcb_get_geometry(connection.get(), connection.root()));
    if (!root) return std::nullopt;
    return Rect{.x = 0, .y = 0, .width = double(root->width), .height = double(root->height)};
}

}  // namespace

std::optional<X11Screen> X11Screen::main(const XcbConnection& connection) {
    const auto whole = wholeScreen(connection);
    if (!whole) return std::nullopt;
    X11Screen screen{.pixels = *whole, .scale = scaleOf(connection)};
    const auto monitors = monitorsOf(connection);
    const auto primary = std::ranges::find(monitors, true, &Monitor::isPrimary);
    if (primary != monitors.end()) {
        screen.pixels = primary->pixels;
    } else if (!monitors.empty()) {
        screen.pixels = monitors.front().pixels;
    }
    return screen;
}

ActiveDisplays X11Screen::activeDisplays(const XcbConnection& connection) {
    ActiveDisplays displays;
    if (!hasMonitors(connection)) return displays;
    // The current ones: the other request has the server ask every connector, which takes seconds.
    const auto resources = connection.reply<xcb_randr_get_screen_resources_current_reply>(
        xcb_randr_get_screen_resources_current(connection.get(), connection.root()));
    if (!resources) return displays;
    const xcb_randr_output_t* const outputs =
        xcb_randr_get_screen_resources_current_outputs(resources.get());
    for (int i = 0; i < resources->num_outputs; ++i) {
        const auto output = connection.reply<xcb_randr_get_output_info_reply>(
            xcb_randr_get_output_info(connection.get(), outputs[i], resources->config_timestamp));
        // Without one of these it shows nothing.
        if (!output || output->crtc == XCB_NONE) continue;
        const std::string_view name(
            reinterpret_cast<const char*>(xcb_randr_get_output_info_name(output.get())),
            output->name_len);
        (isBuiltIn(name) ? displays.hasBuiltIn : displays.hasExternal) = true;
    }
    return displays;
}

bool X11Screen::isBuiltIn(std::string_view connector) {
    return std::ranges::any_of(std::array<std::string_view, 3>{"eDP", "LVDS", "DSI"},
                               [&](std::string_view kind) { return connector.starts_with(kind); });
}

std::vector<Rect> X11Screen::monitors(const XcbConnection& connection) {
    std::vector<Rect> found;
    for (const Monitor& monitor : monitorsOf(connection))
        found.push_back(monitor.pixels);
    if (found.empty()) {
        if (const auto whole = wholeScreen(connection)) found.push_back(*whole);
    }
    return found;
}

}  // namespace marrowby
