// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/PasswordTyping.h"
#include "UnlockCore/Foundation/WeakSelf.h"
#include "UnlockCore/LockWatching/SessionUnlockRule.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/SessionUnlocking.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace marrowby {

/// Opens the lock by asking the desktop, where SessionUnlockRule allows it at that moment; no
/// password is used. Main thread; the references outlive it. Destroyed, it completes nothing.
class SessionUnlockAsker final : public PasswordTyping {
  public:
    struct Services {
        SessionUnlocking& session;
        MainThread& mainThread;
        const SystemClock& clock;
        /// Whether the user still wants it: read again right before asking.
        std::function<bool()> isWanted;
    };

    /// Until the system services must have answered; a later answer changes nothing.
    static constexpr TimeInterval answerLimit{2.0};

    explicit SessionUnlockAsker(Services services) : services_(std::move(services)) {}
    ~SessionUnlockAsker() override = default;
    SessionUnlockAsker(const SessionUnlockAsker&) = delete;
    SessionUnlockAsker& operator=(const SessionUnlockAsker&) = delete;

    void typeStoredPassword(std::function<bool()> stillLocked,
                            std::function<void(TypingOutcome)> completion) override;
    /// What has not been asked yet is not asked any more.
    void stop() { end(TypingOutcome::Stopped{}); }

  private:
    struct Attempt {
        std::uint64_t number = 0;
        std::function<bool()> stillLocked;
        std::function<void(TypingOutcome)> completion;
        std::shared_ptr<MainThread::Timer> timeout;
        bool isAsked = false;
    };

    /// Null where this attempt has ended.
    [[nodiscard]] Attempt* current(std::uint64_t number) {
        return attempt_ && attempt_->number == number ? &*attempt_ : nullptr;
    }
    void decide(Attempt& attempt, const SessionUnlockFacts& facts);
    void runOut(const Attempt& attempt);
    void end(const TypingOutcome& outcome);

    Services services_;
    std::optional<Attempt> attempt_;
    std::uint64_t attempts_ = 0;
    WeakSelf<SessionUnlockAsker> weakSelf_{this};
};

}  // namespace marrowby
