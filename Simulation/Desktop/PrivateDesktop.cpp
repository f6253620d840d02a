// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/PrivateDesktop.h"

#include <signal.h>

namespace marrowby {

namespace {

constexpr TimeInterval startLimit{10.0};

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
    const std::string display = number->readLine(startLimit);
    if (display.empty()) {
        return std::unexpected("Xvfb did not come up within ten seconds, or ended at once.");
    }
    return PrivateDesktop(std::move(*server), ":" + display);
}

}  // namespace marrowby
