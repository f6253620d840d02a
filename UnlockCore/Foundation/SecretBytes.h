// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <new>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

namespace marrowby {

enum class SecretMemoryError { outOfMemory, pageLockRefused };

[[nodiscard]] Phrase description(SecretMemoryError error);

/// Memory pages that are never swapped out and left out of core dumps. One implementation per
/// operating system; the build chooses.
namespace secretpages {

/// Zero-filled pages for at least `size` bytes (at least one page). The span covers all of them.
[[nodiscard]] std::expected<std::span<std::uint8_t>, SecretMemoryError> allocate(std::size_t size);

/// Zeroes and frees what allocate() returned.
void release(std::span<std::uint8_t> pages);

}  // namespace secretpages

/// A fixed number of secret values in pages of their own: locked in memory, left out of core dumps,
/// overwritten with zeros when wiped, moved from or destroyed. Move-only. Not for sharing between
/// threads while one of them writes.
template <typename T>
    requires std::is_trivially_copyable_v<T>
class SecretArray {
  public:
    /// `count` zeros. Fails when the system gives no memory or refuses to lock it.
    [[nodiscard]] static std::expected<SecretArray, SecretMemoryError> create(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / sizeof(T) / 2) {
            return std::unexpected(SecretMemoryError::outOfMemory);
        }
        auto pages = secretpages::allocate(count * sizeof(T));
        if (!pages) return std::unexpected(pages.error());
        return SecretArray(*pages, count);
    }

    [[nodiscard]] static std::expected<SecretArray, SecretMemoryError> copyOf(
        std::span<const T> values) {
        auto copy = create(values.size());
        if (copy) std::ranges::copy(values, copy->values().begin());
        return copy;
    }

    SecretArray(SecretArray&& other) noexcept
        : pages_(std::exchange(other.pages_, {})), count_(std::exchange(other.count_, 0)) {}
    SecretArray& operator=(SecretArray&& other) noexcept {
        std::swap(pages_, other.pages_);
        std::swap(count_, other.count_);
        return *this;
    }
    SecretArray(const SecretArray&) = delete;
    SecretArray& operator=(const SecretArray&) = delete;
    ~SecretArray() {
        if (!pages_.empty()) secretpages::release(pages_);
    }

    [[nodiscard]] std::span<T> values() { return {begin(), count_}; }
    [[nodiscard]] std::span<const T> values() const { return {begin(), count_}; }
    [[nodiscard]] std::size_t size() const { return count_; }
    [[nodiscard]] bool empty() const { return count_ == 0; }

    /// Overwrites every value with zero; the size stays.
    void wipe() {
        volatile std::uint8_t* byte = pages_.data();
        for (std::size_t i = 0; i < pages_.size(); ++i)
            byte[i] = 0;
    }

    /// Drops values from the end, overwriting them.
    void shrink(std::size_t count) {
        if (count >= count_) return;
        std::ranges::fill(values().subspan(count), T{});
        count_ = count;
    }

  private:
    SecretArray(std::span<std::uint8_t> pages, std::size_t count) : pages_(pages), count_(count) {}

    // Pages are aligned for any T, and a byte array from the system's allocator implicitly starts
    // the lifetime of trivially copyable objects in it (C++20 [intro.object]).
    [[nodiscard]] T* begin() const { return std::launder(reinterpret_cast<T*>(pages_.data())); }

    std::span<std::uint8_t> pages_;
    std::size_t count_ = 0;
};

using SecretBytes = SecretArray<std::uint8_t>;
using SecretUTF16 = SecretArray<char16_t>;

}  // namespace marrowby
