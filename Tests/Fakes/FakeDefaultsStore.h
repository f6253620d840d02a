// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/DefaultsStore.h"

#include <map>
#include <string>
#include <utility>

namespace marrowby {

/// A defaults store in memory.
class FakeDefaultsStore final : public DefaultsStore {
  public:
    /// What is stored; free to read and change.
    std::map<std::string, DefaultsValue> values;

    [[nodiscard]] std::optional<DefaultsValue> value(const std::string& key) const override {
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }
    void set(const std::string& key, DefaultsValue value) override {
        values.insert_or_assign(key, std::move(value));
    }
    void remove(const std::string& key) override { values.erase(key); }
};

}  // namespace marrowby
