// SPDX-License-Identifier: Apache-2.0
#include "Tests/Hostile/Ground/Impostor.h"

#include "Tests/Hostile/Ground/WorkingDesktop.h"

#include <algorithm>
#include <array>
#include <utility>

#include <poll.h>
#include <signal.h>
#include <unistd.h>

namespace marrowby {

Impostor::Impostor(const std::string& displayName, std::vector<std::string> command,
                   bool isReadyAtOnce)
    : keys_(Pipe::create().value()),
      program_(ChildProcess::start({.arguments = std::move(command),
                                    .environment = {"DISPLAY=" + displayName},
                                    .third = keys_.writing.get(),
                                    .endSignal = SIGKILL})) {
    keys_.writing.close();
    if (!program_ || !isReadyAtOnce) return;
    hasBegun_ = read(20'000) && received_.starts_with('\n');
}

std::size_t Impostor::characters() {
    while (read(100)) {
    }
    end();
    constexpr std::array<char, 5> silent{'\n', char(keycode::leftShift), char(keycode::rightShift),
                                         char(keycode::leftControl), char(keycode::leftAlt)};
    return static_cast<std::size_t>(std::ranges::count_if(
        received_, [&](char key) { return std::ranges::find(silent, key) == silent.end(); }));
}

void Impostor::end() {
    // The process group, which includes its children.
    if (program_) ::kill(-program_->id(), SIGKILL);
    program_ = std::unexpected("ended");
}

bool Impostor::read(int milliseconds) {
    pollfd wanted{.fd = keys_.reading.get(), .events = POLLIN, .revents = 0};
    if (::poll(&wanted, 1, milliseconds) <= 0) return false;
    std::array<char, 256> buffer{};
    const ssize_t count = ::read(keys_.reading.get(), buffer.data(), buffer.size());
    if (count > 0) received_.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
}

}  // namespace marrowby
