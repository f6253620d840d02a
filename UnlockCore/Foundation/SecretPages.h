#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <span>
#include <string_view>

namespace marrowby {

enum class SecretMemoryError { outOfMemory, pageLockRefused };

/// The fixed sentence for the user.
[[nodiscard]] std::string_view description(SecretMemoryError error);

/// Whole pages of their own that are never swapped out and left out of core dumps. Each operating
/// system has its file; the build chooses.
namespace secretpages {

/// Zero-filled pages for at least `size` bytes (at least one page). The span covers all of them.
[[nodiscard]] std::expected<std::span<std::uint8_t>, SecretMemoryError> allocate(std::size_t size);

/// Overwrites and gives back what allocate() returned.
void release(std::span<std::uint8_t> pages);

}  // namespace secretpages

}  // namespace marrowby
