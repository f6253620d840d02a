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
/// Booleans, where they are there at all.
inline constexpr const char* screenIsLocked = "CGSSessionScreenIsLocked";
inline constexpr const char* onConsole = "kCGSSessionOnConsoleKey";
}  // namespace sessionkey

/// What the window server says about the login session. Any thread.
class LoginSession {
  public:
    virtual ~LoginSession() = default;
    /// Nothing where there is no session to ask about.
    [[nodiscard]] virtual std::optional<SessionDictionary> copyCurrentDictionary() const = 0;
};

}  // namespace marrowby
