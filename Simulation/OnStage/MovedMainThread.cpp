// SPDX-License-Identifier: Apache-2.0
#include "Simulation/OnStage/MovedMainThread.h"

#include <vector>

namespace marrowby {

/// A timer that follows the moved clock.
class MovedMainThread::Moved : public Timer {
  public:
    explicit Moved(MovedMainThread& owner) : owner_(owner) { owner_.timers_.insert(this); }
    ~Moved() override { owner_.timers_.erase(this); }
    Moved(const Moved&) = delete;
    Moved& operator=(const Moved&) = delete;

    virtual void clockMoved() = 0;

  protected:
    [[nodiscard]] MainThread& real() const { return *owner_.real_; }
    [[nodiscard]] TimeInterval ahead() const { return owner_.clock_.ahead(); }

  private:
    MovedMainThread& owner_;
};

class MovedMainThread::Once final : public Moved {
  public:
    Once(MovedMainThread& owner, Date fireDate, TimeInterval tolerance, std::function<void()> work)
        : Moved(owner), fireDate_(fireDate), tolerance_(tolerance), work_(std::move(work)) {
        arm();
    }
    void clockMoved() override {
        if (!hasFired_) arm();
    }

  private:
    void arm() {
        timer_ = real().at(fireDate_ - ahead(), tolerance_, [this] {
            hasFired_ = true;
            // The callback may destroy this.
            const auto work = std::move(work_);
            work();
        });
    }

    const Date fireDate_;
    const TimeInterval tolerance_;
    std::function<void()> work_;
    bool hasFired_ = false;
    std::unique_ptr<Timer> timer_;
};

class MovedMainThread::Repeated final : public Moved {
  public:
    Repeated(MovedMainThread& owner, TimeInterval interval, TimeInterval tolerance,
             std::function<void()> work)
        : Moved(owner),
          work_(std::make_shared<const std::function<void()>>(std::move(work))),
          timer_(real().every(interval, tolerance, [held = work_] { (*held)(); })) {}
    void clockMoved() override {
        real().post([gone = std::weak_ptr(work_)] {
            if (const auto work = gone.lock()) (*work)();
        });
    }

  private:
    const std::shared_ptr<const std::function<void()>> work_;
    const std::unique_ptr<Timer> timer_;
};

void MovedMainThread::clockMoved() {
    for (Moved* timer : timers_)
        timer->clockMoved();
}

std::unique_ptr<MainThread::Timer> MovedMainThread::at(Date fireDate, TimeInterval tolerance,
                                                       std::function<void()> work) {
    return std::make_unique<Once>(*this, fireDate, tolerance, std::move(work));
}

std::unique_ptr<MainThread::Timer> MovedMainThread::every(TimeInterval interval,
                                                          TimeInterval tolerance,
                                                          std::function<void()> work) {
    return std::make_unique<Repeated>(*this, interval, tolerance, std::move(work));
}

}  // namespace marrowby
