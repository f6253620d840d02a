// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace marrowby {

using SessionValue = std::variant<bool, std::int64_t, double, std::string>;
using SessionDictionary = std::map<std::string, SessionValue>;

namespace sessionkey {
/// Boolean values; either may be absent.
inline constexpr const char* screenIsLocked = "CGSSessionScreenIsLocked";
inline constexpr const char* onConsole = "kCGSSessionOnConsoleKey";
}  // namespace sessionkey

/// The window server's facts about the login session. Any thread.
class LoginSession {
  public:
    virtual ~LoginSession() = default;
    /// `nullopt` without a session.
    [[nodiscard]] virtual std::optional<SessionDictionary> copyCurrentDictionary() const = 0;
};

}  // namespace marrowby
