#include "Tests/Platforms/Linux/PrivateDisplay.h"

#include <cstddef>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xtest.h>

namespace marrowby {
namespace {

constexpr int patience = 20'000;

std::optional<xcb_keycode_t> keycodeOf(const XcbConnection& connection, std::uint32_t keysym) {
    const xcb_setup_t& setup = *xcb_get_setup(connection.get());
    const auto count = static_cast<std::uint8_t>(setup.max_keycode - setup.min_keycode + 1);
    const auto mapping = connection.reply<xcb_get_keyboard_mapping_reply>(
        xcb_get_keyboard_mapping(connection.get(), setup.min_keycode, count));
    if (!mapping) return std::nullopt;
    const std::span keysyms(
        xcb_get_keyboard_mapping_keysyms(mapping.get()),
        static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(mapping.get())));
    for (std::size_t i = 0; i < keysyms.size(); i += mapping->keysyms_per_keycode) {
        if (keysyms[i] != keysym) continue;
        return static_cast<xcb_keycode_t>(setup.min_keycode + i / mapping->keysyms_per_keycode);
    }
    return std::nullopt;
}

/// Starts a program with the given standard output (none where negative) and no error output.
PrivateDisplay::Program spawn(std::vector<std::string> arguments, int output,
                              const std::string& displayName) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    std::string display = "DISPLAY=" + displayName;
    std::vector<char*> environment{display.data()};
    for (char** entry = environ; *entry; ++entry) {
        if (!std::string_view(*entry).starts_with("DISPLAY=")) environment.push_back(*entry);
    }
    environment.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (output >= 0) posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int error =
        posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environment.data());
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? PrivateDisplay::Program(child) : PrivateDisplay::Program();
}

/// The first line, waiting for it with patience; nothing where the writer ends or is silent.
std::optional<std::string> readLine(int input) {
    std::string line;
    pollfd readable{.fd = input, .events = POLLIN, .revents = 0};
    while (::poll(&readable, 1, patience) > 0) {
        char character = 0;
        if (::read(input, &character, 1) != 1) return std::nullopt;
        if (character == '\n') return line;
        line.push_back(character);
    }
    return std::nullopt;
}

}  // namespace

void PrivateDisplay::Program::kill() {
    const pid_t child = std::exchange(child_, 0);
    if (child == 0) return;
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

PrivateDisplay::PrivateDisplay(Program server, std::string name,
                               std::unique_ptr<XcbConnection> connection)
    : server_(std::move(server)), name_(std::move(name)), connection_(std::move(connection)) {}

std::pair<PrivateDisplay::Program, std::optional<std::string>> PrivateDisplay::startServer(
    const std::vector<const char*>& name) {
    int ends[2] = {};
    if (::pipe2(ends, O_CLOEXEC) != 0) return {Program(), std::nullopt};
    std::vector<std::string> arguments{"Xvfb"};
    arguments.insert(arguments.end(), name.begin(), name.end());
    for (const char* argument :
         {"-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp", "-noreset"})
        arguments.emplace_back(argument);
    Program server = spawn(std::move(arguments), ends[1], "");
    ::close(ends[1]);
    std::optional<std::string> number = readLine(ends[0]);
    ::close(ends[0]);
    return {std::move(server), std::move(number)};
}

std::unique_ptr<PrivateDisplay> PrivateDisplay::start() {
    auto [server, number] = startServer({});
    if (!server || !number) return nullptr;
    std::string name = ":" + *number;
    auto connection = XcbConnection::create(name);
    if (!connection) return nullptr;
    return std::unique_ptr<PrivateDisplay>(
        new PrivateDisplay(std::move(server), std::move(name), std::move(*connection)));
}

bool PrivateDisplay::startAgain() {
    auto [server, number] = startServer({name_.c_str()});
    if (!server || !number) return false;
    server_ = std::move(server);
    auto connection = XcbConnection::create(name_);
    if (!connection) return false;
    connection_ = std::move(*connection);
    return true;
}

PrivateDisplay::Program PrivateDisplay::run(const char* program, const char* argument) const {
    return spawn({program, argument}, -1, name_);
}

void PrivateDisplay::tap(std::uint32_t keysym) const {
    const auto keycode = keycodeOf(*connection_, keysym);
    if (!keycode) return;
    for (const std::uint8_t type : {std::uint8_t{XCB_KEY_PRESS}, std::uint8_t{XCB_KEY_RELEASE}}) {
        xcb_test_fake_input(connection_->get(), type, *keycode, XCB_CURRENT_TIME, XCB_NONE, 0, 0,
                            0);
    }
    connection_->flush();
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
