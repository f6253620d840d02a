// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/OwnerAuthentication.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace marrowby {

/// An authentication that waits for the test, or answers every prompt at once. Main thread, except
/// for the replies.
class FakeOwnerAuthentication final : public OwnerAuthentication {
  public:
    using Reply = std::expected<bool, OwnerAuthenticationError>;
    struct Prompt {
        std::int64_t policy = 0;
        std::string reason;
        /// May be called repeatedly, and on another thread.
        std::function<void(Reply)> reply;
    };

    /// Error of canEvaluate, if any.
    std::optional<OwnerAuthenticationError> unavailable;
    /// Immediate answer to every prompt.
    std::optional<Reply> answer;
    std::vector<Prompt> prompts;
    std::size_t contexts = 0;

    [[nodiscard]] std::shared_ptr<OwnerAuthenticationContext> makeContext() override {
        ++contexts;
        return std::make_shared<Context>(*this);
    }

  private:
    class Context final : public OwnerAuthenticationContext {
      public:
        explicit Context(FakeOwnerAuthentication& owner) : owner_(owner) {}
        [[nodiscard]] std::expected<void, OwnerAuthenticationError> canEvaluate(
            std::int64_t /*policy*/) override {
            if (owner_.unavailable) return std::unexpected(*owner_.unavailable);
            return {};
        }
        void evaluate(std::int64_t policy, const std::string& reason,
                      std::function<void(Reply)> reply) override {
            owner_.prompts.push_back({policy, reason, std::move(reply)});
            // Copy: the reply may prompt again.
            const Prompt prompt = owner_.prompts.back();
            if (owner_.answer) prompt.reply(*owner_.answer);
        }

      private:
        FakeOwnerAuthentication& owner_;
    };
};

}  // namespace marrowby
