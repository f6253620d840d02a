#include "Simulation/Desktop/PrivateDesktop.h"

#include <array>

#include <poll.h>
#include <signal.h>
#include <unistd.h>

namespace marrowby {

namespace {

constexpr TimeInterval startLimit{10.0};

/// The server's output up to the first newline; empty when it ends or is silent before.
std::string readLine(int descriptor) {
    const auto limit = static_cast<int>(startLimit.count() * 1000);
    std::string line;
    while (true) {
        pollfd wanted{.fd = descriptor, .events = POLLIN, .revents = 0};
        char character = 0;
        if (::poll(&wanted, 1, limit) <= 0 || ::read(descriptor, &character, 1) != 1) return {};
        if (character == '\n') return line;
        line += character;
    }
}

}  // namespace

std::expected<PrivateDesktop, std::string> PrivateDesktop::create(const PrivateScreen& screen) {
    auto number = Pipe::create();
    if (!number) return std::unexpected(number.error());
    const std::string size = std::to_string(screen.width * screen.scale) + "x" +
                             std::to_string(screen.height * screen.scale) + "x24";
    // On SIGTERM the server removes its socket and lock file.
    auto server = ChildProcess::start({.arguments = {"Xvfb", "-displayfd", "3", "-screen", "0",
                                                     size, "-nolisten", "tcp", "-noreset"},
                                       .environment = {},
                                       .third = number->writing.get(),
                                       .endSignal = SIGTERM});
    if (!server) return std::unexpected(server.error());
    number->writing.close();
    const std::string display = readLine(number->reading.get());
    if (display.empty()) {
        return std::unexpected("Xvfb did not come up within ten seconds, or ended at once.");
    }
    return PrivateDesktop(std::move(*server), ":" + display);
}

}  // namespace marrowby
