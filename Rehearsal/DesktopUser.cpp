#include "Rehearsal/DesktopUser.h"

#include "Platforms/Linux/XcbConnection.h"

#include <array>
#include <utility>

#include <xcb/xtest.h>

namespace marrowby {

std::expected<DesktopUser, std::string> DesktopUser::create(const std::string& displayName) {
    auto connection = XcbConnection::create(displayName);
    if (!connection) return std::unexpected(connection.error());
    return DesktopUser(*std::move(connection), displayName);
}

DesktopUser::DesktopUser(std::unique_ptr<XcbConnection> connection, const std::string& displayName)
    : connection_(std::move(connection)), keys_(std::make_unique<XTestKeyEvents>(displayName)) {}

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

void DesktopUser::pointAt(const Point& place) const {
    xcb_test_fake_input(connection_->get(), XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME,
                        connection_->root(), static_cast<std::int16_t>(place.x),
                        static_cast<std::int16_t>(place.y), 0);
    connection_->flush();
}

bool DesktopUser::tap(std::uint32_t keysym) {
    const auto source = keys_->makeSource({}, std::array{keysym});
    return source && source->post({.code = keysym, .down = true}) &&
           source->post({.code = keysym, .down = false});
}

}  // namespace marrowby
