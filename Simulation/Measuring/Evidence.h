#pragma once

#include "Simulation/Measuring/Look.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/LockScreenServices/FaceScan.h"

#include <expected>
#include <filesystem>
#include <string>
#include <vector>

namespace marrowby {

/// What recognition and the cues found in one picture of a look.
struct FrameEvidence {
    /// Since the look's first picture.
    TimeInterval at{};
    FaceScan::Findings findings;
};

/// All that a model pack found in a look: enough to judge it again in another way.
struct LookEvidence {
    Look::Label label;
    std::vector<FrameEvidence> frames;
};

/// Errors are one sentence. Aligned pictures are not kept.
[[nodiscard]] std::expected<void, std::string> writeEvidence(const std::filesystem::path& file,
                                                             const LookEvidence& evidence);
[[nodiscard]] std::expected<LookEvidence, std::string> readEvidence(
    const std::filesystem::path& file);

}  // namespace marrowby
