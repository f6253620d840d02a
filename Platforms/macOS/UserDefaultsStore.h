// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/DefaultsStore.h"

namespace marrowby {

/// The application's user defaults; the system decides when to write them. A command-line argument
/// overrides the stored value.
class UserDefaultsStore final : public DefaultsStore {
  public:
    [[nodiscard]] std::optional<DefaultsValue> value(const std::string& key) const override;
    void set(const std::string& key, DefaultsValue value) override;
    void remove(const std::string& key) override;
};

}  // namespace marrowby
