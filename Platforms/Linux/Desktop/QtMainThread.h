#pragma once

#include "UnlockCore/Platform/MainThread.h"

#include <memory>

namespace marrowby {

/// The thread that makes it, under Qt's event loop. Made and destroyed there, while a
/// QCoreApplication exists; outlives everyone who posts. Ends the process when the system gives it
/// no timer at all.
class QtMainThread final : public MainThread {
  public:
    QtMainThread();
    ~QtMainThread() override;

    [[nodiscard]] bool isCurrent() const override;
    void post(std::function<void()> work) override;
    /// Follows the wall clock when somebody sets it and across suspension.
    [[nodiscard]] std::unique_ptr<Timer> at(Date fireDate, TimeInterval tolerance,
                                            std::function<void()> work) override;
    [[nodiscard]] std::unique_ptr<Timer> every(TimeInterval interval, TimeInterval tolerance,
                                               std::function<void()> work) override;

  private:
    class Alarms;
    class AlarmTimer;
    class IntervalTimer;
    struct Receiver;

    std::unique_ptr<Receiver> receiver_;
    std::shared_ptr<Alarms> alarms_;
};

}  // namespace marrowby
