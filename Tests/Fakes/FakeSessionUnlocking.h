// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/SessionUnlocking.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace marrowby {

/// A desktop that can be asked, whose session looks rightly locked; it answers when the test says.
class FakeSessionUnlocking final : public SessionUnlocking {
  public:
    void setOpening(LockOpening opening) {
        opening_ = opening;
        if (const auto report = onChange) report();
    }

    [[nodiscard]] LockOpening opening() const override { return opening_; }
    [[nodiscard]] bool isSessionKnown() const override { return isKnown; }
    void read(std::function<void(const SessionUnlockFacts&)> onRead) override {
        pendingRead = std::move(onRead);
    }
    void ask(std::function<void(const std::expected<void, std::string>&)> onAnswer) override {
        ++asked;
        pendingAnswer = std::move(onAnswer);
    }

    void lockAgain() override { ++lockedAgain; }

    /// To the last question; kept, as a service may answer twice.
    void tellFacts() const {
        if (pendingRead) pendingRead(facts);
    }
    void answer(const std::expected<void, std::string>& given = {}) const {
        if (pendingAnswer) pendingAnswer(given);
    }

    SessionUnlockFacts facts{.isLocked = true,
                             .lockedFor = TimeInterval(60),
                             .isOwn = true,
                             .isActive = true,
                             .hasSeat = true,
                             .isGoingToSleep = false,
                             .shell = SessionUnlockFacts::Shell::own,
                             .isForbidden = false};
    bool isKnown = true;
    int asked = 0;
    int lockedAgain = 0;
    std::function<void(const SessionUnlockFacts&)> pendingRead;
    std::function<void(const std::expected<void, std::string>&)> pendingAnswer;

  private:
    LockOpening opening_ = LockOpening::asking;
};

}  // namespace marrowby
