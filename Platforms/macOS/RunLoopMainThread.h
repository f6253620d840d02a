#pragma once

#include "UnlockCore/Platform/MainThread.h"

namespace marrowby {

/// The main run loop in its common modes, so also while menus, windows and modal panels are
/// tracked. Timers of a date follow the wall clock through its jumps and the computer's sleep;
/// repeating ones stand still while it sleeps.
class RunLoopMainThread final : public MainThread {
  public:
    [[nodiscard]] bool isCurrent() const override;
    void post(std::function<void()> work) override;
    [[nodiscard]] std::unique_ptr<Timer> at(Date fireDate, TimeInterval tolerance,
                                            std::function<void()> work) override;
    [[nodiscard]] std::unique_ptr<Timer> every(TimeInterval interval, TimeInterval tolerance,
                                               std::function<void()> work) override;
};

}  // namespace marrowby
