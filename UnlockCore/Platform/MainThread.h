// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <functional>
#include <memory>

namespace marrowby {

/// The thread that owns the engine, and its run loop (also while menus and windows are tracked).
class MainThread {
  public:
    /// A scheduled call. Main thread only; destroying it cancels it.
    class Timer {
      public:
        virtual ~Timer() = default;
    };

    virtual ~MainThread() = default;

    [[nodiscard]] virtual bool isCurrent() const = 0;

    /// Runs `work` on the main thread after what was posted before it. Any thread. Dropped when the
    /// loop has ended.
    virtual void post(std::function<void()> work) = 0;

    /// Calls once, not before `fireDate` of the wall clock and at most `tolerance` later where the
    /// system is not busy. Main thread. A date in the past fires on the next turn of the loop.
    [[nodiscard]] virtual std::unique_ptr<Timer> at(Date fireDate, TimeInterval tolerance,
                                                    std::function<void()> work) = 0;

    /// Calls every `interval`, first after one interval. Main thread. Missed calls are skipped.
    [[nodiscard]] virtual std::unique_ptr<Timer> every(TimeInterval interval,
                                                       TimeInterval tolerance,
                                                       std::function<void()> work) = 0;
};

}  // namespace marrowby
