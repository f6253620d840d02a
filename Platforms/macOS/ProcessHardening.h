#pragma once

namespace marrowby {

/// Keeps the memory of this process from core files and debuggers. False when the system refuses.
[[nodiscard]] bool makeProcessUndumpable();

}  // namespace marrowby
