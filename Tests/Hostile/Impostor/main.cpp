// SPDX-License-Identifier: Apache-2.0

// A program that pretends to be a screen locker.
//
//   hostile-impostor CLASS [grab] [saver] [background]
//
// Covers the screen with an override-redirect window of this class. “grab”: grabs the keyboard,
// retrying until it succeeds. “saver”: sets xscreensaver's root property to locked. “background”: a
// child takes over the connection and the parent exits. Writes a newline to descriptor 3 when
// ready, then the code of each key that it receives.

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include <unistd.h>
#include <xcb/xcb.h>

namespace {

xcb_window_t showWindow(xcb_connection_t* display, const xcb_screen_t& screen,
                        std::string_view className) {
    const xcb_window_t window = xcb_generate_id(display);
    const std::array<std::uint32_t, 3> values{screen.black_pixel, 1, XCB_EVENT_MASK_KEY_PRESS};
    xcb_create_window(
        display, XCB_COPY_FROM_PARENT, window, screen.root, 0, 0, screen.width_in_pixels,
        screen.height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
        XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
    const std::string names =
        std::string(className) + '\0' + std::string(className) + '\0';  // instance and class
    xcb_change_property(display, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING,
                        8, static_cast<std::uint32_t>(names.size()), names.data());
    xcb_map_window(display, window);
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(display, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    return window;
}

bool takeKeyboard(xcb_connection_t* display, xcb_window_t window) {
    auto* const reply =
        xcb_grab_keyboard_reply(display,
                                xcb_grab_keyboard(display, 0, window, XCB_CURRENT_TIME,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                nullptr);
    const bool taken = reply != nullptr && reply->status == XCB_GRAB_STATUS_SUCCESS;
    std::free(reply);
    return taken;
}

xcb_atom_t atom(xcb_connection_t* display, std::string_view name) {
    auto* const reply = xcb_intern_atom_reply(
        display, xcb_intern_atom(display, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr);
    const xcb_atom_t atom = reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    std::free(reply);
    return atom;
}

void sayLocked(xcb_connection_t* display, const xcb_screen_t& screen) {
    const std::array<std::uint32_t, 2> status{atom(display, "LOCK"), 0};
    xcb_change_property(display, XCB_PROP_MODE_REPLACE, screen.root,
                        atom(display, "_SCREENSAVER_STATUS"), XCB_ATOM_INTEGER, 32, status.size(),
                        status.data());
}

void tell(std::uint8_t byte) {
    if (::write(3, &byte, 1) != 1) std::exit(1);
}

}  // namespace

int main(int count, char* words[]) {
    xcb_connection_t* const display = xcb_connect(nullptr, nullptr);
    if (count < 2 || xcb_connection_has_error(display) != 0) return 1;
    const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(display)).data;
    const xcb_window_t window = showWindow(display, screen, words[1]);
    for (int i = 2; i < count; ++i) {
        const std::string_view word = words[i];
        if (word == "saver") sayLocked(display, screen);
        if (word == "background" && ::fork() != 0) std::_Exit(0);
        while (word == "grab" && !takeKeyboard(display, window)) {
            if (xcb_connection_has_error(display) != 0) return 1;
        }
    }
    (void)atom(display, "done");
    tell('\n');
    while (xcb_generic_event_t* const event = xcb_wait_for_event(display)) {
        if ((event->response_type & 0x7F) == XCB_KEY_PRESS)
            tell(reinterpret_cast<const xcb_key_press_event_t*>(event)->detail);
        std::free(event);
    }
    return 0;
}
