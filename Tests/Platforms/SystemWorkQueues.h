#pragma once

#include "UnlockCore/Platform/WorkQueues.h"

#include <memory>

namespace marrowby {

/// The real queues of the system that the tests run on.
[[nodiscard]] std::unique_ptr<WorkQueues> systemWorkQueues();

}  // namespace marrowby
