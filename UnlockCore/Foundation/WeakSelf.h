// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace marrowby {

/// Lets the callbacks that an object hands out find it gone. Declared last in its owner, so that it
/// expires first. Handles and guarded callbacks may be copied and destroyed on any thread, and the
/// owner is used only on the thread that destroys it.
template <typename Owner>
class WeakSelf {
  public:
    class Handle {
      public:
        /// Null once the owner is gone, or about to go.
        [[nodiscard]] Owner* get() const {
            const auto anchor = anchor_.lock();
            return anchor ? *anchor : nullptr;
        }

      private:
        friend WeakSelf;
        explicit Handle(const std::shared_ptr<Owner*>& anchor) : anchor_(anchor) {}
        std::weak_ptr<Owner*> anchor_;
    };

    explicit WeakSelf(Owner* owner) : anchor_(std::make_shared<Owner*>(owner)) {}
    ~WeakSelf() = default;
    WeakSelf(const WeakSelf&) = delete;
    WeakSelf& operator=(const WeakSelf&) = delete;

    [[nodiscard]] Handle handle() const { return Handle(anchor_); }

    /// A callback that calls `work` with the owner and its own arguments while the owner is there.
    template <typename Work>
    [[nodiscard]] auto guarded(Work work) const {
        return [owner = handle(), work = std::move(work)](auto&&... arguments) {
            if (Owner* const self = owner.get())
                std::invoke(work, *self, std::forward<decltype(arguments)>(arguments)...);
        };
    }

    /// Expires now, for an owner whose members may call back while they go.
    void expire() { anchor_.reset(); }

  private:
    std::shared_ptr<Owner*> anchor_;
};

}  // namespace marrowby
