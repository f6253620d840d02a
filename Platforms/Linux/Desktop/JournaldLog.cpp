// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/JournaldLog.h"

#include <algorithm>
#include <iostream>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace marrowby {

namespace {

/// Sends one entry in systemd's native journal protocol, one field per line.
bool send(const std::string& path, const std::string& fields) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    std::ranges::copy(path, std::begin(address.sun_path));
    const int descriptor = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0) return false;
    const auto sent = ::sendto(descriptor, fields.data(), fields.size(), MSG_NOSIGNAL,
                               reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ::close(descriptor);
    return sent == static_cast<ssize_t>(fields.size());
}

/// A line break would end a field.
std::string inOneLine(std::string text) {
    std::ranges::replace(text, '\n', ' ');
    return text;
}

}  // namespace

void JournaldLog::write(const Entry& entry) const {
    const std::string line = inOneLine(entry.message);
    std::string fields = std::string("PRIORITY=") + (entry.isDebugging ? '7' : '6') +
                         "\nSYSLOG_IDENTIFIER=" + identifier_ + "\nMESSAGE=" + line + "\n";
    if (!entry.event.empty()) fields += "MARROWBY_EVENT=" + inOneLine(entry.event) + "\n";
    if (!entry.subject.empty()) fields += "MARROWBY_SUBJECT=" + inOneLine(entry.subject) + "\n";
    if (send(socket_, fields) || entry.isDebugging) return;
    std::cerr << identifier_ + ": " + line + "\n" << std::flush;
}

}  // namespace marrowby
