// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Engine/SystemUnlockClock.h"

#include <utility>

namespace marrowby {

namespace {

class Token final : public UnlockCoordinator::TimerToken {
  public:
    explicit Token(std::unique_ptr<MainThread::Timer> timer) : timer_(std::move(timer)) {}
    void cancel() override { timer_.reset(); }

  private:
    std::unique_ptr<MainThread::Timer> timer_;
};

}  // namespace

std::unique_ptr<UnlockCoordinator::TimerToken> SystemUnlockClock::schedule(
    Date date, std::function<void()> work) {
    return std::make_unique<Token>(mainThread_.at(date, tolerance, std::move(work)));
}

}  // namespace marrowby
