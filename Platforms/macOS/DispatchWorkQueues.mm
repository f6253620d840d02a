// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/DispatchWorkQueues.h"

#include <utility>

namespace marrowby {

void DispatchWorkQueue::async(std::function<void()> work) {
    auto held = std::make_shared<std::function<void()>>(std::move(work));
    dispatch_async(queue_, ^{
      @autoreleasepool {
          // Destroys captured objects on the queue, not wherever the block is released.
          const std::function<void()> running = std::exchange(*held, nullptr);
          running();
      }
    });
}

std::shared_ptr<WorkQueue> DispatchWorkQueues::serial(std::string label) {
    dispatch_queue_attr_t attributes =
        dispatch_queue_attr_make_with_qos_class(DISPATCH_QUEUE_SERIAL, QOS_CLASS_USER_INITIATED, 0);
    return std::make_shared<DispatchWorkQueue>(dispatch_queue_create(label.c_str(), attributes));
}

std::shared_ptr<WorkQueue> DispatchWorkQueues::background() {
    return std::make_shared<DispatchWorkQueue>(
        dispatch_get_global_queue(QOS_CLASS_USER_INITIATED, 0));
}

}  // namespace marrowby
