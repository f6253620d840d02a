// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Camera/V4l2SystemCalls.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace marrowby {

namespace {

constexpr std::string_view prefix = "video";

template <typename Call>
int retried(const Call& call) {
    int result = -1;
    do {
        result = call();
    } while (result < 0 && errno == EINTR);
    return result < 0 ? -errno : result;
}

}  // namespace

std::vector<V4l2Calls::Node> V4l2SystemCalls::nodes() {
    std::vector<std::pair<int, std::string>> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/dev", error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (!name.starts_with(prefix)) continue;
        int number = 0;
        const char* last = name.data() + name.size();
        const auto [stop, fault] = std::from_chars(name.data() + prefix.size(), last, number);
        if (fault == std::errc() && stop == last)
            found.emplace_back(number, entry->path().string());
    }
    std::ranges::sort(found);
    constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
    std::vector<Node> nodes;
    nodes.reserve(found.size());
    for (auto& [number, path] : found) {
        struct stat status{};
        if (::stat(path.c_str(), &status) != 0) continue;
        nodes.push_back(
            {.path = std::move(path),
             .inode = status.st_ino,
             .changedAt = status.st_ctim.tv_sec * nanosecondsPerSecond + status.st_ctim.tv_nsec});
    }
    return nodes;
}

bool V4l2SystemCalls::mayOpen(const std::string& node) {
    return ::access(node.c_str(), R_OK | W_OK) == 0;
}

int V4l2SystemCalls::open(const std::string& node) {
    return retried([&] { return ::open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC); });
}

void V4l2SystemCalls::close(int file) {
    ::close(file);
}

int V4l2SystemCalls::ioctl(int file, unsigned long request, void* argument) {
    return retried([&] { return ::ioctl(file, request, argument); });
}

std::span<std::uint8_t> V4l2SystemCalls::map(int file, std::size_t length, std::uint32_t offset) {
    void* memory = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, file, offset);
    if (memory == MAP_FAILED) return {};
    return {static_cast<std::uint8_t*>(memory), length};
}

void V4l2SystemCalls::unmap(std::span<std::uint8_t> memory) {
    ::munmap(memory.data(), memory.size());
}

int V4l2SystemCalls::poll(int file, int milliseconds) {
    pollfd waiting{.fd = file, .events = POLLIN, .revents = 0};
    const int result = retried([&] { return ::poll(&waiting, 1, milliseconds); });
    return result < 0 ? result : waiting.revents;
}

}  // namespace marrowby
