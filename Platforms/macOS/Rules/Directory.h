#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <span>
#include <string>

namespace marrowby {

/// An error of the directory service: its domain, code and localized text.
struct DirectoryError {
    std::string domain;
    std::int64_t code = 0;
    std::string message;
    friend bool operator==(const DirectoryError&, const DirectoryError&) = default;
};

/// What the service says of a wrong password.
inline constexpr const char* directoryErrorDomain = "com.apple.OpenDirectory";
inline constexpr std::int64_t directoryInvalidCredentials = 5000;

/// The node that covers every configured source of authentication, and the records of users in it.
inline constexpr std::uint32_t directoryAuthenticationNode = 0x2201;
inline constexpr const char* directoryUserRecords = "dsRecTypeStandard:Users";

/// Knows the computer's accounts. Any thread; blocks.
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
        /// Without any attributes.
        [[nodiscard]] virtual Result<std::unique_ptr<Record>> record(const std::string& type,
                                                                     const std::string& name) = 0;
    };

    virtual ~Directory() = default;
    [[nodiscard]] virtual Result<std::unique_ptr<Node>> openNode(std::uint32_t type) = 0;
};

}  // namespace marrowby
