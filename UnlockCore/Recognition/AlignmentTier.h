#pragma once

#include <optional>
#include <string_view>

namespace marrowby {

/// How many reference points an alignment rests on.
enum class AlignmentTier { fivePoint, twoPoint };

[[nodiscard]] std::optional<AlignmentTier> alignmentTier(std::string_view rawValue);
[[nodiscard]] std::string_view rawValue(AlignmentTier tier);

}  // namespace marrowby
