// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/MainThread.h"

namespace marrowby {

/// The main run loop in common modes, so it also runs while menus are tracked and modal panels
/// shown. One-shot timers follow changes of the wall clock, and sleep; repeating ones stop during
/// sleep.
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
