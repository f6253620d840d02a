// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Foundation/Time.h"

#include <array>
#include <optional>
#include <string_view>

namespace marrowby {

/// How long the vault key stays in memory without being used.
enum class AutoLockInterval { week, twoWeeks, month, never };

inline constexpr std::array allAutoLockIntervals{AutoLockInterval::week, AutoLockInterval::twoWeeks,
                                                 AutoLockInterval::month, AutoLockInterval::never};

/// Shown with the choice in the settings.
inline constexpr auto autoLockExplanation =
    Phrase("The key is in memory until you restart or the time below passes.");

[[nodiscard]] std::optional<AutoLockInterval> autoLockInterval(std::string_view rawValue);
[[nodiscard]] std::string_view rawValue(AutoLockInterval interval);
[[nodiscard]] Phrase title(AutoLockInterval interval);
/// None: never.
[[nodiscard]] std::optional<TimeInterval> length(AutoLockInterval interval);

}  // namespace marrowby
