// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/DesktopUser.h"

#include "Platforms/Linux/X11/XcbConnection.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <utility>

#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace marrowby {
namespace {

struct Key {
    xcb_keycode_t code{};
    bool isShifted = false;
};

std::optional<Key> keyFor(const XcbConnection& connection, xcb_keysym_t keysym) {
    const xcb_setup_t& setup = *xcb_get_setup(connection.get());
    const auto count = static_cast<std::uint8_t>(setup.max_keycode - setup.min_keycode + 1);
    const auto mapping = connection.reply<xcb_get_keyboard_mapping_reply>(
        xcb_get_keyboard_mapping(connection.get(), setup.min_keycode, count));
    if (!mapping) return std::nullopt;
    const std::size_t columns = mapping->keysyms_per_keycode;
    const std::span keysyms(xcb_get_keyboard_mapping_keysyms(mapping.get()), count * columns);
    for (std::size_t column = 0; column < std::min<std::size_t>(columns, 2); ++column) {
        for (std::size_t row = 0; row < count; ++row) {
            if (keysyms[row * columns + column] == keysym)
                return Key{.code = static_cast<xcb_keycode_t>(setup.min_keycode + row),
                           .isShifted = column == 1};
        }
    }
    return std::nullopt;
}

bool send(const XcbConnection& connection, xcb_keycode_t key, bool down) {
    xcb_test_fake_input(connection.get(), down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, key,
                        XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    return connection.reply<xcb_get_input_focus_reply>(xcb_get_input_focus(connection.get())) !=
           nullptr;
}

}  // namespace

std::expected<DesktopUser, std::string> DesktopUser::create(const std::string& displayName) {
    auto connection = XcbConnection::create(displayName);
    if (!connection) return std::unexpected(connection.error());
    return DesktopUser(*std::move(connection));
}

DesktopUser::DesktopUser(std::unique_ptr<XcbConnection> connection)
    : connection_(std::move(connection)) {}

DesktopUser::DesktopUser(DesktopUser&&) noexcept = default;
DesktopUser::~DesktopUser() = default;

QImage DesktopUser::screen() const {
    const xcb_screen_t& root = connection_->screen();
    const auto picture = connection_->reply<xcb_get_image_reply>(
        xcb_get_image(connection_->get(), XCB_IMAGE_FORMAT_Z_PIXMAP, root.root, 0, 0,
                      root.width_in_pixels, root.height_in_pixels, ~0U));
    if (!picture) return {};
    return QImage(xcb_get_image_data(picture.get()), root.width_in_pixels, root.height_in_pixels,
                  QImage::Format_RGB32)
        .copy();
}

QImage DesktopUser::activeWindow() const {
    const auto active = connection_->reply<xcb_get_property_reply>(
        xcb_get_property(connection_->get(), 0, connection_->root(),
                         connection_->atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW, 0, 1));
    if (!active || xcb_get_property_value_length(active.get()) != sizeof(xcb_window_t)) return {};
    const auto window = *static_cast<const xcb_window_t*>(xcb_get_property_value(active.get()));
    const auto size =
        connection_->reply<xcb_get_geometry_reply>(xcb_get_geometry(connection_->get(), window));
    const auto place = connection_->reply<xcb_translate_coordinates_reply>(
        xcb_translate_coordinates(connection_->get(), window, connection_->root(), 0, 0));
    if (!size || !place) return {};
    return screen().copy(place->dst_x, place->dst_y, size->width, size->height);
}

void DesktopUser::pointAt(const Point& place) const {
    xcb_test_fake_input(connection_->get(), XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME,
                        connection_->root(), static_cast<std::int16_t>(place.x),
                        static_cast<std::int16_t>(place.y), 0);
    connection_->flush();
}

bool DesktopUser::press(std::uint32_t keysym, bool down) const {
    const auto key = keyFor(*connection_, keysym);
    return key && !key->isShifted && send(*connection_, key->code, down);
}

bool DesktopUser::write(std::string_view text) const {
    for (const char character : text) {
        // The keysyms of ASCII are its codes.
        const auto key = keyFor(*connection_, static_cast<unsigned char>(character));
        if (!key || (key->isShifted && !press(XKB_KEY_Shift_L, true))) return false;
        const bool isTyped =
            send(*connection_, key->code, true) && send(*connection_, key->code, false);
        if ((key->isShifted && !press(XKB_KEY_Shift_L, false)) || !isTyped) return false;
    }
    return true;
}

}  // namespace marrowby
