#pragma once

namespace marrowby {

/// Keeps the memory of this process from core files and from other processes of the same user.
/// False when the system refuses.
[[nodiscard]] bool makeProcessUndumpable();

}  // namespace marrowby
