// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/WorkQueues.h"

#include <memory>

namespace marrowby {

/// The real WorkQueues of the tested platform.
[[nodiscard]] std::unique_ptr<WorkQueues> systemWorkQueues();

}  // namespace marrowby
