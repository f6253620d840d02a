// SPDX-License-Identifier: Apache-2.0
#include "Tests/Hostile/Ground/WorkingDesktop.h"

#include "Platforms/Linux/X11/XKeyGuard.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <span>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xcb/xtest.h>

namespace marrowby {

namespace {

constexpr std::chrono::seconds limit{20};

/// End markers, used alternately: a late one of the previous read must not end the next.
struct Marker {
    std::uint8_t key;
    char byte;
};
constexpr std::array markers{Marker{keycode::tab, '\t'}, Marker{keycode::escape, '\x1b'},
                             Marker{keycode::returnKey, '\r'}};

bool isMarker(char byte) {
    return byte == '\t' || byte == '\x1b' || byte == '\r';
}

// Prints its window's ID and a newline, then every byte it receives.
constexpr const char* recordingScript =
    R"sh(stty raw -echo; exec >"$0"; echo "$WINDOWID"; exec cat)sh";

}  // namespace

std::expected<WorkingDesktop, std::string> WorkingDesktop::create() {
    auto server = PrivateDesktop::create();
    if (!server) return std::unexpected(server.error());
    auto connection = XcbConnection::create(server->displayName());
    if (!connection) return std::unexpected(connection.error());
    auto folder = PrivateFolder::create();
    if (!folder) return std::unexpected(folder.error());
    WorkingDesktop desktop(std::move(*server), std::move(*connection), std::move(*folder));
    if (const auto started = desktop.startPrograms(); !started)
        return std::unexpected(started.error());
    return desktop;
}

std::expected<void, std::string> WorkingDesktop::startPrograms() {
    const std::string pipe = folder_.path() / "terminal";
    if (::mkfifo(pipe.c_str(), 0600) != 0) return std::unexpected("No pipe could be made.");
    // Opened for writing too, so that it never reaches end-of-file.
    output_ = OwnedFile(::open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    const std::vector<std::string> environment{"DISPLAY=" + displayName(),
                                               "HOME=" + folder_.path().string(), "LC_ALL=C.UTF-8",
                                               // Where one runs.
                                               "XMODIFIERS=@im=ibus"};
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"openbox", "--sm-disable"},
          std::vector<std::string>{"xterm", "-xrm",
                                   "XTerm*VT100.translations: #override <Key>F12: secure()", "-e",
                                   "sh", "-c", recordingScript, pipe}}) {
        auto program = ChildProcess::start(
            {.arguments = command, .environment = environment, .endSignal = SIGKILL});
        if (!program) return std::unexpected(program.error());
        programs_.push_back(std::move(*program));
    }
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!unread_.contains('\n')) {
        if (std::chrono::steady_clock::now() > deadline)
            return std::unexpected("The terminal did not come up.");
        (void)readTerminal(100);
    }
    terminal_ = static_cast<xcb_window_t>(std::strtoul(unread_.c_str(), nullptr, 10));
    unread_.clear();
    // A window manager that is still starting ignores the first map request.
    while (!isTerminalManaged()) {
        if (std::chrono::steady_clock::now() > deadline)
            return std::unexpected("The window manager did not come up.");
        xcb_map_window(connection_->get(), terminal_);
        (void)readTerminal(100);
    }
    const std::uint32_t events = XCB_EVENT_MASK_FOCUS_CHANGE;
    xcb_change_window_attributes(connection_->get(), terminal_, XCB_CW_EVENT_MASK, &events);
    if (const auto bytes = terminalBytes(); !bytes) return std::unexpected(bytes.error());
    return {};
}

bool WorkingDesktop::isTerminalManaged() const {
    const auto tree =
        connection_->reply<xcb_query_tree_reply>(xcb_query_tree(connection_->get(), terminal_));
    const auto attributes = connection_->reply<xcb_get_window_attributes_reply>(
        xcb_get_window_attributes(connection_->get(), terminal_));
    return tree && tree->parent != connection_->root() && attributes &&
           attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool WorkingDesktop::awaitGrab() const {
    pollfd wanted{.fd = connection_->fd(), .events = POLLIN, .revents = 0};
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < deadline) {
        while (const XcbConnection::Owned<xcb_generic_event_t> event{
            xcb_poll_for_event(connection_->get())}) {
            const auto& focus = reinterpret_cast<const xcb_focus_out_event_t&>(*event);
            if ((event->response_type & 0x7F) == XCB_FOCUS_OUT &&
                focus.mode == XCB_NOTIFY_MODE_GRAB)
                return true;
        }
        ::poll(&wanted, 1, 100);
    }
    return false;
}

bool WorkingDesktop::awaitHeldKeyboard(std::chrono::seconds patience) const {
    const XKeyGuard guard(*connection_);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (std::chrono::steady_clock::now() < deadline) {
        if (guard.isKeyboardHeld()) return true;
    }
    return false;
}

void WorkingDesktop::press(std::uint8_t keycode, bool down) const {
    fake(down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, keycode);
}

void WorkingDesktop::tap(std::uint8_t keycode) const {
    press(keycode, true);
    press(keycode, false);
}

void WorkingDesktop::clickOnTheDesktop(std::uint8_t button) const {
    fake(XCB_MOTION_NOTIFY, 0);
    fake(XCB_BUTTON_PRESS, button);
    fake(XCB_BUTTON_RELEASE, button);
}

void WorkingDesktop::fake(std::uint8_t type, std::uint8_t detail) const {
    const auto& screen = connection_->screen();
    const bool moves = type == XCB_MOTION_NOTIFY;
    xcb_test_fake_input(connection_->get(), type, detail, XCB_CURRENT_TIME,
                        moves ? connection_->root() : XCB_NONE,
                        moves ? static_cast<std::int16_t>(screen.width_in_pixels - 5) : 0,
                        moves ? static_cast<std::int16_t>(screen.height_in_pixels - 5) : 0, 0);
    (void)connection_->atom("done");
}

std::expected<std::string, std::string> WorkingDesktop::terminalBytes() {
    const Marker marker = markers[reads_++ % markers.size()];
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!unread_.contains(marker.byte)) {
        if (std::chrono::steady_clock::now() > deadline)
            return std::unexpected("The terminal gets no keys.");
        xcb_set_input_focus(connection_->get(), XCB_INPUT_FOCUS_PARENT, terminal_,
                            XCB_CURRENT_TIME);
        tap(marker.key);
        (void)readTerminal(200);
    }
    std::string bytes = std::exchange(unread_, {});
    std::erase_if(bytes, isMarker);
    return bytes;
}

bool WorkingDesktop::readTerminal(int milliseconds) {
    pollfd wanted{.fd = output_.get(), .events = POLLIN, .revents = 0};
    if (::poll(&wanted, 1, milliseconds) <= 0) return false;
    std::array<char, 512> buffer{};
    const ssize_t count = ::read(output_.get(), buffer.data(), buffer.size());
    if (count > 0) unread_.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
}

std::vector<std::uint32_t> WorkingDesktop::keyboard() const {
    const xcb_keycode_t first = xcb_get_setup(connection_->get())->min_keycode;
    const auto mapping =
        connection_->reply<xcb_get_keyboard_mapping_reply>(xcb_get_keyboard_mapping(
            connection_->get(), first, static_cast<std::uint8_t>(256 - first)));
    const auto held =
        connection_->reply<xcb_query_keymap_reply>(xcb_query_keymap(connection_->get()));
    if (!mapping || !held) return {};
    const std::span keysyms(
        xcb_get_keyboard_mapping_keysyms(mapping.get()),
        static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(mapping.get())));
    std::vector<std::uint32_t> all(keysyms.begin(), keysyms.end());
    all.insert(all.end(), std::begin(held->keys), std::end(held->keys));
    return all;
}

}  // namespace marrowby
