// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Measuring/Take.h"

#include <expected>
#include <filesystem>
#include <string>
#include <vector>

namespace marrowby {

/// The takes below a folder, sorted by name. Every folder that holds pictures is one take, its
/// pictures in the order of their names, labelled by the path to it:
///
///     enrol/PERSON/…            genuine/PERSON/…            attack/KIND/PERSON/…
///
/// A `truth.json` beside the pictures may give their rate ("fps"). The error is one sentence.
[[nodiscard]] std::expected<std::vector<Take>, std::string> takesBelow(
    const std::filesystem::path& folder, double usualFramesPerSecond);

}  // namespace marrowby
