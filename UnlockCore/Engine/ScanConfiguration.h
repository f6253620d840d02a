#pragma once

#include "UnlockCore/Liveness/LivenessMode.h"
#include "UnlockCore/Recognition/FaceIdentity.h"

#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// The parameters of one look.
struct ScanConfiguration {
    /// The camera's unique ID; none is the default camera.
    std::optional<std::string> cameraID;
    std::vector<FaceIdentity> identities;
    /// Cosine similarity.
    float threshold = 0;
    LivenessMode livenessMode = LivenessMode::standard;
};

}  // namespace marrowby
