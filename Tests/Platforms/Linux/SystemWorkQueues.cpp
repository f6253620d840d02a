// SPDX-License-Identifier: Apache-2.0
#include "Tests/Platforms/SystemWorkQueues.h"

#include "Platforms/Linux/Desktop/ThreadWorkQueues.h"

namespace marrowby {

std::unique_ptr<WorkQueues> systemWorkQueues() {
    return std::make_unique<ThreadWorkQueues>();
}

}  // namespace marrowby
