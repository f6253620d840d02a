#pragma once

#include "UnlockCore/Platform/KeyboardDevices.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace marrowby {

/// Keyboards that can be unopenable, and be typed on.
class FakeKeyboardDevices final : public KeyboardDevices {
  public:
    bool hasAccess = true;
    int requests = 0;

    [[nodiscard]] bool hasListenAccess() const override { return hasAccess; }
    void requestListenAccess() override { ++requests; }
    [[nodiscard]] std::unique_ptr<Listening> open(
        Match match, std::function<void(const InputValue&)> onValue) override {
        attempts_.push_back(match);
        if (!opens_) return nullptr;
        auto listener = std::make_shared<Listener>(std::move(onValue));
        std::erase_if(listeners_, [](const auto& other) { return other.expired(); });
        listeners_.push_back(listener);
        return std::make_unique<Handle>(std::move(listener));
    }

    void setOpens(bool opens) { opens_ = opens; }
    /// What open() was asked for, refused ones included.
    [[nodiscard]] const std::vector<Match>& attempts() const { return attempts_; }
    void send(const InputValue& value) const {
        for (const auto& weak : std::vector(listeners_)) {
            if (const auto listener = weak.lock()) (*listener)(value);
        }
    }
    /// One key-down or key-up value of the Space key.
    void space(bool down) const { send({.usagePage = 7, .usage = 44, .value = down ? 1 : 0}); }

  private:
    using Listener = std::function<void(const InputValue&)>;
    class Handle final : public Listening {
      public:
        explicit Handle(std::shared_ptr<Listener> listener) : listener_(std::move(listener)) {}

      private:
        std::shared_ptr<Listener> listener_;
    };

    bool opens_ = true;
    std::vector<Match> attempts_;
    std::vector<std::weak_ptr<Listener>> listeners_;
};

}  // namespace marrowby
