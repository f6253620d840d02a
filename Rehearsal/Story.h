#pragma once

#include "Rehearsal/Stage.h"

#include <expected>
#include <string>
#include <vector>

namespace marrowby {

/// One act of the rehearsal: what must happen, or the sentence about what did not.
struct Act {
    std::string title;
    std::expected<std::string, std::string> (*play)(Stage& stage);
};

/// The acts in their order; each begins and ends with the screen unlocked. What they return is how
/// they ended.
[[nodiscard]] std::vector<Act> acts();

}  // namespace marrowby
