// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/XcbConnection.h"

#include "UnlockCore/Foundation/Phrase.h"

#include <cstdint>
#include <utility>

namespace marrowby {

std::expected<std::unique_ptr<XcbConnection>, std::string> XcbConnection::create(
    const std::string& displayName) {
    int screenNumber = 0;
    xcb_connection_t* connection = xcb_connect(displayName.c_str(), &screenNumber);
    const xcb_screen_t* screen = nullptr;
    if (xcb_connection_has_error(connection) == 0) {
        auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
        while (screenNumber-- > 0 && screens.rem > 0)
            xcb_screen_next(&screens);
        if (screens.rem > 0) screen = screens.data;
    }
    if (!screen) {
        xcb_disconnect(connection);
        return std::unexpected(
            translated("The display “{display}” can’t be opened.", {{"display", displayName}}));
    }
    return std::unique_ptr<XcbConnection>(new XcbConnection(connection, screen, displayName));
}

XcbConnection::XcbConnection(xcb_connection_t* connection, const xcb_screen_t* screen,
                             std::string displayName)
    : connection_(connection), screen_(screen), displayName_(std::move(displayName)) {}

XcbConnection::~XcbConnection() {
    xcb_disconnect(connection_);
}

std::string XcbConnection::lostSentence() const {
    return translated("The display “{display}” is gone.", {{"display", displayName_}});
}

xcb_atom_t XcbConnection::atom(std::string_view name) const {
    const auto answer = reply<xcb_intern_atom_reply>(
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()));
    return answer ? answer->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void XcbConnection::discardEvents() const {
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
    }
}

}  // namespace marrowby
