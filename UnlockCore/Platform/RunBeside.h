#pragma once

#include "UnlockCore/Platform/WorkQueues.h"

#include <functional>

namespace marrowby {

/// Runs `beside` on the queue while `here` runs on this thread, and returns when both are done.
/// What the queue has not begun by the end of `here` runs here too, so a busy queue costs no more
/// than no queue. Neither may throw.
void runBeside(WorkQueue& queue, std::function<void()> beside, const std::function<void()>& here);

}  // namespace marrowby
