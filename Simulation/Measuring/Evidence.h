// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Measuring/Take.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/LockScreenServices/FaceScan.h"

#include <expected>
#include <filesystem>
#include <string>
#include <vector>

namespace marrowby {

/// What recognition and the cues found in one picture of a take.
struct FrameEvidence {
    /// Since the take's first picture.
    TimeInterval at{};
    FaceScan::Findings findings;
};

/// All that a model pack found in a take: enough to judge it again in another way.
struct TakeEvidence {
    Take::Label label;
    std::vector<FrameEvidence> frames;
};

/// Errors are one sentence. Aligned pictures are not kept.
[[nodiscard]] std::expected<void, std::string> writeEvidence(const std::filesystem::path& file,
                                                             const TakeEvidence& evidence);
[[nodiscard]] std::expected<TakeEvidence, std::string> readEvidence(
    const std::filesystem::path& file);

}  // namespace marrowby
