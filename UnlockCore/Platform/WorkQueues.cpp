// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Platform/WorkQueues.h"

#include <atomic>
#include <memory>
#include <utility>

namespace marrowby {

namespace {

/// Work that the first claimant runs, once.
class Claimable {
  public:
    explicit Claimable(std::function<void()> work) : work_(std::move(work)) {}

    void runUnlessClaimed() {
        State expected = State::open;
        if (!state_.compare_exchange_strong(expected, State::claimed)) return;
        std::exchange(work_, {})();
        state_ = State::done;
        state_.notify_one();
    }
    void waitUntilDone() const { state_.wait(State::claimed); }

  private:
    enum class State { open, claimed, done };

    std::function<void()> work_;
    std::atomic<State> state_ = State::open;
};

}  // namespace

void runInParallel(WorkQueue& queue, std::function<void()> beside,
                   const std::function<void()>& here) {
    const auto work = std::make_shared<Claimable>(std::move(beside));
    queue.async([work] { work->runUnlessClaimed(); });
    here();
    work->runUnlessClaimed();
    work->waitUntilDone();
}

}  // namespace marrowby
