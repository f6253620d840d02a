// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Platform/PlatformWords.h"

#include <optional>
#include <string>
#include <string_view>

namespace marrowby {

/// How much proof of life a scan asks for: the real-face model alone, or a small turn of the head
/// as well.
enum class LivenessMode { standard, strict };

/// Reads a stored text in any letter case; "heavy" is an older name of strict. Anything else, or
/// nothing, is standard.
[[nodiscard]] LivenessMode livenessMode(std::optional<std::string_view> stored);

[[nodiscard]] std::string_view rawValue(LivenessMode mode);
[[nodiscard]] Phrase title(LivenessMode mode);
/// What the mode adds, for the settings; empty where it adds nothing.
[[nodiscard]] std::string settingsNote(LivenessMode mode, const PlatformWords& words);

/// What a strict scan may ask of the person in front of the camera: a small turn of the head.
enum class LivenessPrompt { turnHead };

[[nodiscard]] constexpr std::string_view rawValue(LivenessPrompt prompt) {
    switch (prompt) {
        case LivenessPrompt::turnHead:
            return "turnHead";
    }
    return {};
}

}  // namespace marrowby
