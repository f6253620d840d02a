#pragma once

#include "UnlockCore/Engine/PasswordTyping.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace marrowby {

/// A typer whose outcome the test chooses: at once when `outcome` is set, else through complete().
class FakePasswordTyping final : public PasswordTyping {
  public:
    std::optional<TypingOutcome> outcome;
    /// Told of every call: "typePassword".
    std::function<void(std::string)> onCall;

    std::function<bool()> stillLocked;
    std::function<void(TypingOutcome)> complete;

    void typeStoredPassword(std::function<bool()> isStillLocked,
                            std::function<void(TypingOutcome)> completion) override {
        if (onCall) onCall("typePassword");
        stillLocked = std::move(isStillLocked);
        complete = std::move(completion);
        if (outcome) complete(*outcome);
    }
};

}  // namespace marrowby
