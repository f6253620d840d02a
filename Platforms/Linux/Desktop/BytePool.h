// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace marrowby {

/// Reuses large buffers: each returns to the pool when its last holder releases it. Any thread;
/// buffers may outlive the pool.
class BytePool {
  public:
    explicit BytePool(std::size_t mostSpare);

    /// `size` bytes, uninitialised (old content).
    [[nodiscard]] std::shared_ptr<std::vector<std::uint8_t>> take(std::size_t size) const;

  private:
    class Spare;
    std::shared_ptr<Spare> spare_;
};

}  // namespace marrowby
