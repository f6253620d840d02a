// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/MainThread.h"

#include <memory>

namespace marrowby {

/// The main thread under Qt's event loop. Create and destroy it there, while a QCoreApplication
/// exists; it must outlive everything that posts to it. Aborts when timerfd_create fails.
class QtMainThread final : public MainThread {
  public:
    QtMainThread();
    ~QtMainThread() override;

    [[nodiscard]] bool isCurrent() const override;
    void post(std::function<void()> work) override;
    /// Follows changes of the wall clock, and suspension.
    [[nodiscard]] std::unique_ptr<Timer> at(Date fireDate, TimeInterval tolerance,
                                            std::function<void()> work) override;
    [[nodiscard]] std::unique_ptr<Timer> every(TimeInterval interval, TimeInterval tolerance,
                                               std::function<void()> work) override;

  private:
    class Alarms;
    class AlarmTimer;
    class IntervalTimer;
    class Receiver;

    std::unique_ptr<Receiver> receiver_;
    std::shared_ptr<Alarms> alarms_;
};

}  // namespace marrowby
