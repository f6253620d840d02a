// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/KeyboardDevices.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace marrowby {

/// Keyboards that type what the test says, or cannot be opened. One listener at a time.
class FakeKeyboardDevices final : public KeyboardDevices {
  public:
    bool opens = true;
    /// Arguments of all open() calls, also of refused ones.
    std::vector<Match> attempts;

    [[nodiscard]] bool hasListenAccess() const override { return true; }
    [[nodiscard]] std::unique_ptr<Listening> open(
        Match match, std::function<void(const InputValue&)> onValue) override {
        attempts.push_back(match);
        if (!opens) return nullptr;
        auto listener = std::make_shared<Listener>(std::move(onValue));
        listener_ = listener;
        return std::make_unique<Handle>(std::move(listener));
    }
    void send(const InputValue& value) const {
        if (const auto listener = listener_.lock()) (*listener)(value);
    }

  private:
    using Listener = std::function<void(const InputValue&)>;
    class Handle final : public Listening {
      public:
        explicit Handle(std::shared_ptr<Listener> listener) : listener_(std::move(listener)) {}

      private:
        std::shared_ptr<Listener> listener_;
    };

    std::weak_ptr<Listener> listener_;
};

}  // namespace marrowby
