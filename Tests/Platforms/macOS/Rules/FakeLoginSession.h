// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/LoginSession.h"

#include <optional>
#include <utility>

namespace marrowby {

/// A login session with the test's values. One thread.
class FakeLoginSession final : public LoginSession {
  public:
    [[nodiscard]] std::optional<SessionDictionary> copyCurrentDictionary() const override {
        return dictionary_;
    }
    void setDictionary(std::optional<SessionDictionary> dictionary) {
        dictionary_ = std::move(dictionary);
    }

  private:
    std::optional<SessionDictionary> dictionary_;
};

}  // namespace marrowby
