// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <string>

namespace marrowby {

/// Named notifications without a payload.
class NotificationCenter {
  public:
    struct Token {
        std::uint64_t value = 0;
        friend auto operator<=>(const Token&, const Token&) = default;
    };

    virtual ~NotificationCenter() = default;

    /// Handlers run on the main thread. Main thread only, as is remove().
    [[nodiscard]] virtual Token observe(std::string name, std::function<void()> handler) = 0;

    /// The handler is not called after this, not even for earlier posts. Ignores an unknown token.
    virtual void remove(Token token) = 0;

    /// Any thread.
    virtual void post(const std::string& name) = 0;
};

}  // namespace marrowby
