// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/OwnerCheck.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace marrowby {

/// An owner check that the test answers, or that answers at once. Main thread, except for the
/// replies.
class FakeOwnerCheck final : public OwnerCheck {
  public:
    struct Prompt {
        std::string reason;
        /// Confirms or cancels; may be called again, or on another thread.
        std::function<void(bool)> reply;
    };

    /// Why the owner can't be asked.
    std::optional<std::string> unavailable;
    /// What every prompt gives at once.
    std::optional<bool> answer;
    std::vector<Prompt> prompts;

    [[nodiscard]] std::expected<void, std::string> canConfirm() override {
        if (unavailable) return std::unexpected(*unavailable);
        return {};
    }
    void confirmOwner(const std::string& reason, Completion completion) override {
        prompts.push_back({reason, [completion = std::move(completion)](bool confirms) {
                               if (confirms) return completion({});
                               completion(
                                   std::unexpected(OwnerCheckError(OwnerCheckError::Cancelled{})));
                           }});
        // A copy: the reply may ask again.
        const Prompt prompt = prompts.back();
        if (answer) prompt.reply(*answer);
    }
};

}  // namespace marrowby
