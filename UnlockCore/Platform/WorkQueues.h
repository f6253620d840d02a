// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Work off the main thread.
class WorkQueue {
  public:
    virtual ~WorkQueue() = default;
    /// Any thread; returns at once.
    virtual void async(std::function<void()> work) = 0;
};

/// Hands out queues. A serial queue runs one piece of work at a time in the order given; the
/// background queue may run several at once. Destroying the last holder of a queue lets its work
/// finish.
class WorkQueues {
  public:
    virtual ~WorkQueues() = default;
    [[nodiscard]] virtual std::shared_ptr<WorkQueue> serial(std::string label) = 0;
    [[nodiscard]] virtual std::shared_ptr<WorkQueue> background() = 0;
};

/// Runs `beside` on the queue while `here` runs on this thread, and returns when both are done.
/// What the queue has not begun by the end of `here` runs here too, so a busy queue delays nothing.
/// Neither may throw.
void runInParallel(WorkQueue& queue, std::function<void()> beside,
                   const std::function<void()>& here);

}  // namespace marrowby
