// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/SpaceKeys.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace marrowby {

/// Keyboards that can be unopenable, and whose Space key the test presses.
class FakeSpaceKeys final : public SpaceKeys {
  public:
    bool hasAccess = true;
    bool opens = true;
    int requests = 0;

    [[nodiscard]] bool hasListenAccess() const override { return hasAccess; }
    void requestListenAccess() override { ++requests; }
    [[nodiscard]] std::unique_ptr<Listening> listen(std::function<void(Press)> onPress) override {
        if (!opens) return nullptr;
        auto listener = std::make_shared<Listener>(std::move(onPress));
        std::erase_if(listeners_, [](const auto& other) { return other.expired(); });
        listeners_.push_back(listener);
        return std::make_unique<Handle>(std::move(listener));
    }

    void press(Press press = {}) const {
        for (const auto& weak : std::vector(listeners_)) {
            if (const auto listener = weak.lock()) (*listener)(press);
        }
    }

  private:
    using Listener = std::function<void(Press)>;
    class Handle final : public Listening {
      public:
        explicit Handle(std::shared_ptr<Listener> listener) : listener_(std::move(listener)) {}

      private:
        std::shared_ptr<Listener> listener_;
    };

    std::vector<std::weak_ptr<Listener>> listeners_;
};

}  // namespace marrowby
