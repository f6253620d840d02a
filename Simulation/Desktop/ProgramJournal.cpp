// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/ProgramJournal.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include <sys/socket.h>
#include <sys/un.h>

namespace marrowby {

namespace {

std::string field(std::string_view name, std::string_view fields) {
    const std::string beginning = "\n" + std::string(name) + "=";
    const std::size_t begin = fields.find(beginning);
    if (begin == std::string_view::npos) return {};
    const std::string_view value = fields.substr(begin + beginning.size());
    return std::string(value.substr(0, value.find('\n')));
}

}  // namespace

std::expected<std::unique_ptr<ProgramJournal>, std::string> ProgramJournal::create(
    const std::filesystem::path& socket, std::function<void(const Entry&)> onEntry) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = socket;
    OwnedFile descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const bool fits = path.size() < sizeof address.sun_path;
    if (fits) std::ranges::copy(path, std::begin(address.sun_path));
    if (!fits || descriptor.get() < 0 ||
        ::bind(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
            0) {
        return std::unexpected("No journal could be made at “" + path + "”.");
    }
    return std::unique_ptr<ProgramJournal>(
        new ProgramJournal(std::move(descriptor), std::move(onEntry)));
}

ProgramJournal::ProgramJournal(OwnedFile socket, std::function<void(const Entry&)> onEntry)
    : socket_(std::move(socket)),
      onEntry_(std::move(onEntry)),
      notifier_(socket_.get(), QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { read(); });
}

void ProgramJournal::read() {
    std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t size = ::recv(socket_.get(), buffer.data(), buffer.size(), 0);
        if (size <= 0) return;
        const std::string_view fields(buffer.data(), static_cast<std::size_t>(size));
        onEntry_({.message = field("MESSAGE", fields),
                  .event = field("MARROWBY_EVENT", fields),
                  .subject = field("MARROWBY_SUBJECT", fields)});
    }
}

}  // namespace marrowby
