// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <expected>
#include <filesystem>
#include <ostream>
#include <string>

namespace marrowby {

/// The owner wakes the displays that many times, before cameras of 15 and of 30 pictures a second,
/// and after long absences. Writes when each step of the unlock was reached, median and 95th
/// percentile. The error is a sentence for the user.
[[nodiscard]] std::expected<void, std::string> measureRoad(const std::filesystem::path& models,
                                                           const std::filesystem::path& program,
                                                           int unlocks, std::ostream& out);

}  // namespace marrowby
