// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Measuring/Trial.h"

#include <expected>
#include <filesystem>
#include <span>
#include <string>

namespace marrowby {

/// Writes a PNG of how the takes' scores are spread: the real-face model's, of people and attacks,
/// and the similarity to the own and to other enrolled faces. The error is one sentence.
[[nodiscard]] std::expected<void, std::string> writeScorePlot(const std::filesystem::path& file,
                                                              std::span<const TakeResult> results);

}  // namespace marrowby
