// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Input/EvdevDevices.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <time.h>
#include <unistd.h>

namespace marrowby {
namespace {

template <std::size_t bitCount>
class Bits {
  public:
    Bits(int descriptor, unsigned type) {
        (void)::ioctl(descriptor, EVIOCGBIT(type, sizeof words_), words_.data());
    }
    [[nodiscard]] bool contains(std::size_t bit) const {
        return ((words_[bit / wordBits] >> (bit % wordBits)) & 1) != 0;
    }

  private:
    static constexpr std::size_t wordBits = sizeof(unsigned long) * CHAR_BIT;
    std::array<unsigned long, bitCount / wordBits + 1> words_{};
};

/// By its place in sysfs. Bluetooth devices are virtual as well, but lie in another folder.
bool isMadeByAProgram(const std::filesystem::path& device) {
    std::error_code error;
    const auto place = std::filesystem::read_symlink(
        std::filesystem::path("/sys/class/input") / device.filename(), error);
    return place.string().contains("/virtual/input/");
}

}  // namespace

std::optional<EvdevDevices::Description> EvdevDevices::describe(
    int descriptor, const std::filesystem::path& device) {
    int clock = CLOCK_MONOTONIC;
    if (::ioctl(descriptor, EVIOCSCLOCKID, &clock) != 0) return std::nullopt;
    const Bits<EV_CNT> kinds(descriptor, 0);
    const Bits<KEY_CNT> keys(descriptor, EV_KEY);
    return Description{
        .isForUsers = kinds.contains(EV_KEY) || kinds.contains(EV_REL) || kinds.contains(EV_ABS),
        .hasSpaceKey = keys.contains(KEY_SPACE),
        .isVirtual = isMadeByAProgram(device)};
}

EvdevDevices::EvdevDevices(std::filesystem::path folder, Describe describe)
    : folder_(std::move(folder)), describe_(std::move(describe)) {}

EvdevDevices::~EvdevDevices() {
    for (const auto& [path, device] : devices_)
        ::close(device.descriptor);
}

void EvdevDevices::refresh() {
    std::error_code error;
    for (auto entry = std::filesystem::directory_iterator(folder_, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::filesystem::path& path = entry->path();
        if (!path.filename().string().starts_with("event") || devices_.contains(path)) continue;
        const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        if (descriptor < 0) continue;
        const auto description = describe_(descriptor, path);
        if (description && description->isForUsers) {
            devices_[path] = {.descriptor = descriptor, .description = *description};
        } else {
            ::close(descriptor);
        }
    }
}

void EvdevDevices::prune() {
    std::erase_if(devices_, [](const auto& entry) {
        std::error_code error;
        if (std::filesystem::exists(entry.first, error)) return false;
        ::close(entry.second.descriptor);
        return true;
    });
}

bool EvdevDevices::drain(const std::string& path,
                         const std::function<void(const input_event&)>& onEvent) {
    const auto device = devices_.find(path);
    if (device == devices_.end()) return false;
    const int descriptor = device->second.descriptor;
    while (true) {
        std::array<input_event, 64> events{};
        const ssize_t size = ::read(descriptor, events.data(), sizeof events);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0 && errno == EAGAIN) return true;
        if (size <= 0) break;
        const auto count = static_cast<std::size_t>(size) / sizeof(input_event);
        for (std::size_t i = 0; i < count; ++i)
            onEvent(events[i]);
    }
    devices_.erase(device);
    ::close(descriptor);
    return false;
}

}  // namespace marrowby
