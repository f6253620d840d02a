// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace marrowby {

/// What a defaults store can hold; `monostate` stands for a stored value of some other kind.
using DefaultsValue =
    std::variant<std::monostate, bool, std::int64_t, double, std::string, std::vector<std::string>>;

/// The user's settings, by key. Main thread. Writing is best effort, as the system's store is.
class DefaultsStore {
  public:
    virtual ~DefaultsStore() = default;
    /// Nothing when the key is missing.
    [[nodiscard]] virtual std::optional<DefaultsValue> value(const std::string& key) const = 0;
    virtual void set(const std::string& key, DefaultsValue value) = 0;
    virtual void remove(const std::string& key) = 0;
    /// A sentence about settings that could not be read or written; none where all is well or the
    /// system does not say.
    [[nodiscard]] virtual std::optional<std::string> problem() const { return std::nullopt; }
};

}  // namespace marrowby
