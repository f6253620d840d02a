// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <array>
#include <optional>
#include <string_view>

namespace marrowby {

/// How similar a face must be to an enrolled one.
enum class MatchStrictness { relaxed, standard, strict };

inline constexpr std::array allMatchStrictnesses{
    MatchStrictness::relaxed, MatchStrictness::standard, MatchStrictness::strict};

[[nodiscard]] std::optional<MatchStrictness> matchStrictness(std::string_view rawValue);
[[nodiscard]] std::string_view rawValue(MatchStrictness strictness);
[[nodiscard]] Phrase displayName(MatchStrictness strictness);
/// A cosine similarity.
[[nodiscard]] float threshold(MatchStrictness strictness);

}  // namespace marrowby
