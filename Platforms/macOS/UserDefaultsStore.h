#pragma once

#include "UnlockCore/Platform/DefaultsStore.h"

namespace marrowby {

/// The application's own user defaults, which the system writes to disk when it likes. A value that
/// was given on the command line hides the stored one.
class UserDefaultsStore final : public DefaultsStore {
  public:
    [[nodiscard]] std::optional<DefaultsValue> value(const std::string& key) const override;
    void set(const std::string& key, DefaultsValue value) override;
    void remove(const std::string& key) override;
};

}  // namespace marrowby
