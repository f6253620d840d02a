// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11InputIdle.h"

#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/X11/XcbConnection.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <ratio>
#include <utility>

#include <xcb/screensaver.h>

namespace marrowby {

struct X11InputIdle::Display {
    std::unique_ptr<XcbConnection> connection;
};

std::expected<std::unique_ptr<X11InputIdle>, std::string> X11InputIdle::create(
    const std::string& displayName) {
    auto connection = XcbConnection::create(displayName);
    if (!connection) return std::unexpected(connection.error());
    const auto* extension = xcb_get_extension_data((*connection)->get(), &xcb_screensaver_id);
    if (!extension || !extension->present) {
        return std::unexpected(translated("The display “{display}” doesn’t tell its idle time.",
                                          {{"display", displayName}}));
    }
    return std::unique_ptr<X11InputIdle>(new X11InputIdle(
        std::make_unique<const Display>(Display{.connection = std::move(*connection)})));
}

X11InputIdle::X11InputIdle(std::unique_ptr<const Display> display) : display_(std::move(display)) {}

X11InputIdle::~X11InputIdle() = default;

std::optional<TimeInterval> X11InputIdle::sinceLastInput() const {
    const XcbConnection& connection = *display_->connection;
    connection.discardEvents();
    const auto info = connection.reply<xcb_screensaver_query_info_reply>(
        xcb_screensaver_query_info(connection.get(), connection.root()));
    if (!info) return std::nullopt;
    return std::chrono::duration<double, std::milli>(info->ms_since_user_input);
}

TimeInterval X11InputIdle::systemUptime() const {
    return unixtime::uptime();
}

}  // namespace marrowby
