#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <string>

namespace marrowby {

/// Named announcements without a payload, to whoever observes them.
class NotificationCenter {
  public:
    struct Token {
        std::uint64_t value = 0;
        friend auto operator<=>(const Token&, const Token&) = default;
    };

    virtual ~NotificationCenter() = default;

    /// Handlers run on the main thread. Main thread only, as is remove().
    [[nodiscard]] virtual Token observe(std::string name, std::function<void()> handler) = 0;

    /// No call of the handler after this, not even for what was posted before. An unknown token is
    /// fine.
    virtual void remove(Token token) = 0;

    /// Any thread.
    virtual void post(const std::string& name) = 0;
};

}  // namespace marrowby
