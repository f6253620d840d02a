// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/WorkQueues.h"

#include <memory>

namespace marrowby {

/// Worker threads: one per serial queue, up to four for the background queue, started on demand.
/// Destroying a queue waits for its work, except on one of its own threads; destroying this waits
/// for all queues. Work must not wait for the destroying thread. Aborts when a thread cannot be
/// started.
class ThreadWorkQueues final : public WorkQueues {
  public:
    ThreadWorkQueues();
    ~ThreadWorkQueues() override;
    ThreadWorkQueues(const ThreadWorkQueues&) = delete;
    ThreadWorkQueues& operator=(const ThreadWorkQueues&) = delete;

    [[nodiscard]] std::shared_ptr<WorkQueue> serial(std::string label) override;
    [[nodiscard]] std::shared_ptr<WorkQueue> background() override { return background_; }

  private:
    class Joiner;
    class Queue;

    std::shared_ptr<Joiner> joiner_;
    std::shared_ptr<WorkQueue> background_;
};

}  // namespace marrowby
