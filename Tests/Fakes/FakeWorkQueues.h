// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/WorkQueues.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace marrowby {

/// Queues whose work the test runs, on its own thread. One thread.
class FakeWorkQueues final : public WorkQueues {
  public:
    [[nodiscard]] std::shared_ptr<WorkQueue> serial(std::string /*label*/) override {
        return std::make_shared<Queue>(work_);
    }
    [[nodiscard]] std::shared_ptr<WorkQueue> background() override {
        return std::make_shared<Queue>(work_);
    }

    /// Runs the oldest piece of work of all queues; false when there is none.
    bool runOne() {
        if (work_->empty()) return false;
        const auto work = std::move(work_->front());
        work_->pop_front();
        work();
        return true;
    }
    /// Runs everything, and what that adds.
    void runAll() {
        while (runOne()) {
        }
    }

  private:
    using Work = std::deque<std::function<void()>>;

    class Queue final : public WorkQueue {
      public:
        explicit Queue(std::shared_ptr<Work> work) : work_(std::move(work)) {}
        void async(std::function<void()> work) override { work_->push_back(std::move(work)); }

      private:
        std::shared_ptr<Work> work_;
    };

    std::shared_ptr<Work> work_ = std::make_shared<Work>();
};

}  // namespace marrowby
