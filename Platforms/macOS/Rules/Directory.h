// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <span>
#include <string>

namespace marrowby {

struct DirectoryError {
    std::string domain;
    std::int64_t code = 0;
    std::string message;
    friend bool operator==(const DirectoryError&, const DirectoryError&) = default;
};

/// The error for a wrong password.
inline constexpr const char* directoryErrorDomain = "com.apple.OpenDirectory";
inline constexpr std::int64_t directoryInvalidCredentials = 5000;

/// The node of all configured authentication sources, and its user records.
inline constexpr std::uint32_t directoryAuthenticationNode = 0x2201;
inline constexpr const char* directoryUserRecords = "dsRecTypeStandard:Users";

/// The computer's accounts. Any thread; blocks.
class Directory {
  public:
    template <typename T>
    using Result = std::expected<T, DirectoryError>;

    class Record {
      public:
        virtual ~Record() = default;
        /// Well-formed UTF-8, not empty.
        [[nodiscard]] virtual Result<void> verifyPassword(
            std::span<const std::uint8_t> password) = 0;
    };
    class Node {
      public:
        virtual ~Node() = default;
        /// Fetches no attributes.
        [[nodiscard]] virtual Result<std::unique_ptr<Record>> record(const std::string& type,
                                                                     const std::string& name) = 0;
    };

    virtual ~Directory() = default;
    [[nodiscard]] virtual Result<std::unique_ptr<Node>> openNode(std::uint32_t type) = 0;
};

}  // namespace marrowby
