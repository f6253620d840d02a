// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// System calls for a V4L2 camera. A result below 0 is a negative errno, never EINTR. Any thread.
class V4l2Calls {
  public:
    struct Node {
        std::string path;
        std::uint64_t inode = 0;
        /// When it was made or its permissions changed, nanoseconds.
        std::int64_t changedAt = 0;
        friend bool operator==(const Node&, const Node&) = default;
    };

    virtual ~V4l2Calls() = default;

    /// All video nodes in ascending order of their numbers. Opens none.
    [[nodiscard]] virtual std::vector<Node> nodes() = 0;
    /// Whether this user may read and write the node, without opening it.
    [[nodiscard]] virtual bool mayOpen(const std::string& node) = 0;
    /// Opens for non-blocking use.
    [[nodiscard]] virtual int open(const std::string& node) = 0;
    virtual void close(int file) = 0;
    virtual int ioctl(int file, unsigned long request, void* argument) = 0;
    /// Empty when the memory cannot be mapped.
    [[nodiscard]] virtual std::span<std::uint8_t> map(int file, std::size_t length,
                                                      std::uint32_t offset) = 0;
    virtual void unmap(std::span<std::uint8_t> memory) = 0;
    /// The events (poll(2)), or 0 on timeout. With a negative file it only waits.
    [[nodiscard]] virtual int poll(int file, int milliseconds) = 0;
};

}  // namespace marrowby
