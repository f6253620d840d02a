// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/UnlockCoordinator.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/SystemClock.h"

namespace marrowby {

/// The computer's clock and the main thread's timers. Main thread; both must outlive it and its
/// tokens.
class SystemUnlockClock final : public UnlockCoordinator::Clock {
  public:
    static constexpr TimeInterval tolerance{0.05};

    SystemUnlockClock(const SystemClock& clock, MainThread& mainThread)
        : clock_(clock), mainThread_(mainThread) {}

    [[nodiscard]] Date now() const override { return clock_.now(); }
    [[nodiscard]] std::unique_ptr<UnlockCoordinator::TimerToken> schedule(
        Date date, std::function<void()> work) override;

  private:
    const SystemClock& clock_;
    MainThread& mainThread_;
};

}  // namespace marrowby
