// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace marrowby {

/// Protects this process from core dumps and debuggers. False when refused.
[[nodiscard]] bool makeProcessUndumpable();

}  // namespace marrowby
