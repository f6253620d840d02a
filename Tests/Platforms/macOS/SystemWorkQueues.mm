// SPDX-License-Identifier: Apache-2.0
#include "Tests/Platforms/SystemWorkQueues.h"

#include "Platforms/macOS/DispatchWorkQueues.h"

namespace marrowby {

std::unique_ptr<WorkQueues> systemWorkQueues() {
    return std::make_unique<DispatchWorkQueues>();
}

}  // namespace marrowby
