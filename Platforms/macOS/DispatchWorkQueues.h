// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/WorkQueues.h"

#include <dispatch/dispatch.h>

namespace marrowby {

/// A dispatch queue; pending work still runs after this is destroyed.
class DispatchWorkQueue final : public WorkQueue {
  public:
    explicit DispatchWorkQueue(dispatch_queue_t queue) : queue_(queue) {}
    void async(std::function<void()> work) override;
    /// For frameworks that take a queue.
    [[nodiscard]] dispatch_queue_t queue() const { return queue_; }

  private:
    dispatch_queue_t queue_;
};

/// Dispatch queues at user-initiated quality of service; the background queue is the global
/// concurrent one. Each work item runs in its own autorelease pool.
class DispatchWorkQueues final : public WorkQueues {
  public:
    [[nodiscard]] std::shared_ptr<WorkQueue> serial(std::string label) override;
    [[nodiscard]] std::shared_ptr<WorkQueue> background() override;
};

}  // namespace marrowby
