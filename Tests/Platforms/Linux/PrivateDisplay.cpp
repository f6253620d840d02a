// SPDX-License-Identifier: Apache-2.0
#include "Tests/Platforms/Linux/PrivateDisplay.h"

#include "Platforms/Linux/X11/XKeyLayout.h"

#include <utility>
#include <vector>

#include <signal.h>
#include <xcb/xtest.h>

namespace marrowby {

std::unique_ptr<PrivateDisplay> PrivateDisplay::start() {
    std::unique_ptr<PrivateDisplay> display(new PrivateDisplay);
    if (!display->startServer()) return nullptr;
    return display;
}

bool PrivateDisplay::startServer() {
    constexpr TimeInterval patience{20};
    auto number = Pipe::create();
    if (!number) return false;
    std::vector<std::string> arguments{"Xvfb",       "-displayfd", "3",   "-screen", "0",
                                       "640x480x24", "-nolisten",  "tcp", "-noreset"};
    if (!name_.empty()) arguments.insert(arguments.begin() + 1, name_);
    auto server = ChildProcess::start({.arguments = std::move(arguments),
                                       .environment = {},
                                       .third = number->writing.get(),
                                       .endSignal = SIGKILL});
    if (!server) return false;
    server_.emplace(*std::move(server));
    number->writing.close();
    const std::string display = number->readLine(patience);
    if (display.empty()) return false;
    name_ = ":" + display;
    auto connection = XcbConnection::create(name_);
    if (!connection) return false;
    connection_ = std::move(*connection);
    return true;
}

void PrivateDisplay::tap(std::uint32_t keysym) const {
    const auto layout = XKeyLayout::read(*connection_);
    const auto key = layout ? layout->key(keysym) : std::nullopt;
    if (!key) return;
    for (const int type : {XCB_KEY_PRESS, XCB_KEY_RELEASE}) {
        xcb_test_fake_input(connection_->get(), static_cast<std::uint8_t>(type), *key,
                            XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        connection_->flush();
    }
}

void PrivateDisplay::blank() const {
    xcb_force_screen_saver(connection_->get(), XCB_SCREEN_SAVER_ACTIVE);
    xcb_flush(connection_->get());
}

void PrivateDisplay::movePointer() const {
    // Relative, one pixel to the right.
    xcb_test_fake_input(connection_->get(), XCB_MOTION_NOTIFY, 1, XCB_CURRENT_TIME, XCB_NONE, 1, 0,
                        0);
    connection_->flush();
}

void PrivateDisplay::mapKey(std::uint8_t keycode, std::uint32_t keysym) const {
    xcb_change_keyboard_mapping(connection_->get(), 1, keycode, 1, &keysym);
    connection_->flush();
}

void PrivateDisplay::setRootProperty(const char* name, std::uint32_t value) const {
    xcb_change_property(connection_->get(), XCB_PROP_MODE_REPLACE, connection_->root(),
                        connection_->atom(name), XCB_ATOM_INTEGER, 32, 1, &value);
    connection_->flush();
}

LockerWindow::LockerWindow(const PrivateDisplay& display, std::string_view className,
                           Management management)
    : connection_(display.connection()), window_(xcb_generate_id(connection_.get())) {
    const xcb_screen_t& screen = connection_.screen();
    const std::uint32_t overrideRedirect = management == Management::overridden ? 1 : 0;
    xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window_, screen.root, 0, 0,
                      screen.width_in_pixels, screen.height_in_pixels, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT,
                      &overrideRedirect);
    const std::string names = std::string(className) + '\0' + std::string(className) + '\0';
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_CLASS,
                        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(names.size()), names.data());
    connection_.flush();
}

LockerWindow::~LockerWindow() {
    xcb_destroy_window(connection_.get(), window_);
    connection_.flush();
}

void LockerWindow::map() const {
    xcb_map_window(connection_.get(), window_);
    connection_.flush();
}

void LockerWindow::unmap() const {
    xcb_unmap_window(connection_.get(), window_);
    connection_.flush();
}

void LockerWindow::resize(std::uint32_t width, std::uint32_t height) const {
    const std::uint32_t size[] = {width, height};
    xcb_configure_window(connection_.get(), window_,
                         XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size);
    connection_.flush();
}

}  // namespace marrowby
