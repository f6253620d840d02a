// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

struct OwnerAuthenticationError {
    /// The domain of LAError, whose codes are negative.
    static constexpr const char* authenticationDomain = "com.apple.LocalAuthentication";

    std::string domain;
    std::int64_t code = 0;
    std::string message;
    friend bool operator==(const OwnerAuthenticationError&,
                           const OwnerAuthenticationError&) = default;
};

/// One authentication of the device's owner; used once.
class OwnerAuthenticationContext {
  public:
    virtual ~OwnerAuthenticationContext() = default;
    /// A failure without an error object has an empty domain and message, and code 0.
    [[nodiscard]] virtual std::expected<void, OwnerAuthenticationError> canEvaluate(
        std::int64_t policy) = 0;
    /// Prompts the user; replies once, on any thread, even after the context is destroyed.
    virtual void evaluate(
        std::int64_t policy, const std::string& reason,
        std::function<void(std::expected<bool, OwnerAuthenticationError>)> reply) = 0;
};

/// Creates authentications. Main thread.
class OwnerAuthentication {
  public:
    virtual ~OwnerAuthentication() = default;
    [[nodiscard]] virtual std::shared_ptr<OwnerAuthenticationContext> makeContext() = 0;
};

}  // namespace marrowby
