#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// An error of the system: its domain, its code there and its localized text.
struct OwnerAuthenticationError {
    /// Of what goes wrong with the authentication itself, where codes below 0 have a meaning.
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
    /// No error object at all is an empty domain and message with code 0.
    [[nodiscard]] virtual std::expected<void, OwnerAuthenticationError> canEvaluate(
        std::int64_t policy) = 0;
    /// Asks the user; the reply comes once, on any thread, also when the context is gone.
    virtual void evaluate(
        std::int64_t policy, const std::string& reason,
        std::function<void(std::expected<bool, OwnerAuthenticationError>)> reply) = 0;
};

/// The system's way to ask whether the owner is there. Main thread.
class OwnerAuthentication {
  public:
    virtual ~OwnerAuthentication() = default;
    [[nodiscard]] virtual std::shared_ptr<OwnerAuthenticationContext> makeContext() = 0;
};

}  // namespace marrowby
