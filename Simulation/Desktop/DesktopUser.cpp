#include "Simulation/Desktop/DesktopUser.h"

#include "Platforms/Linux/X11/XKeyLayout.h"
#include "Platforms/Linux/X11/XLentKeys.h"
#include "Platforms/Linux/X11/XTestKeyEvents.h"
#include "Platforms/Linux/X11/XcbConnection.h"
#include "UnlockCore/Foundation/Text.h"

#include <map>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon.h>

namespace marrowby {
namespace {

constexpr TimeInterval lendingTime{0.030};
constexpr TimeInterval returningTime{1.0};

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
    const auto layout = XKeyLayout::read(*connection_);
    const auto key = layout ? layout->key(keysym) : std::nullopt;
    return key && send(*connection_, *key, down);
}

bool DesktopUser::write(std::u16string_view text) const {
    const auto layout = XKeyLayout::read(*connection_);
    if (!layout) return false;
    std::map<xcb_keysym_t, xcb_keycode_t> lent;
    std::vector<xcb_keycode_t> keys;
    std::span<const char16_t> rest(text);
    while (!rest.empty()) {
        const xcb_keysym_t keysym = xkb_utf32_to_keysym(takeCharacter(rest));
        if (layout->key(keysym) || lent.contains(keysym)) continue;
        if (keys.size() == layout->freeKeys().size()) return false;
        keys.push_back(layout->freeKeys()[keys.size()]);
        lent[keysym] = keys.back();
    }
    XLentKeys lending(*connection_);
    lending.note(keys);
    for (const auto& [keysym, key] : lent)
        lending.lend(key, keysym);
    if (!lent.empty()) XTestKeyEvents::sleep(lendingTime);
    rest = text;
    while (!rest.empty()) {
        const xcb_keysym_t keysym = xkb_utf32_to_keysym(takeCharacter(rest));
        const auto key =
            lent.contains(keysym) ? std::optional(lent.at(keysym)) : layout->key(keysym);
        if (!key || !send(*connection_, *key, true) || !send(*connection_, *key, false))
            return false;
    }
    // Kept mapped for slow readers.
    if (!lent.empty()) XTestKeyEvents::sleep(returningTime);
    return true;
}

}  // namespace marrowby
