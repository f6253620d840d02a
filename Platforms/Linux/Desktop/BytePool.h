#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace marrowby {

/// Lends large pieces of memory and takes them back when the last holder lets go. Any thread; what
/// is lent may outlive the pool.
class BytePool {
  public:
    /// `mostSpare`: pieces kept for the next time.
    explicit BytePool(std::size_t mostSpare);

    /// `size` bytes with whatever was in them before.
    [[nodiscard]] std::shared_ptr<std::vector<std::uint8_t>> take(std::size_t size) const;

  private:
    class Spare;
    std::shared_ptr<Spare> spare_;
};

}  // namespace marrowby
