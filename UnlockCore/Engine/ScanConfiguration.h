// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Liveness/LivenessMode.h"
#include "UnlockCore/Recognition/FaceIdentity.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// Immutable, shared with every scan that uses them; never null.
using EnrolledFaces = std::shared_ptr<const std::vector<FaceIdentity>>;

/// The parameters of one scan.
struct ScanConfiguration {
    /// The camera's unique ID; none is the default camera.
    std::optional<std::string> cameraID;
    EnrolledFaces identities = std::make_shared<const std::vector<FaceIdentity>>();
    /// Cosine similarity.
    float threshold = 0;
    LivenessMode livenessMode = LivenessMode::standard;
};

}  // namespace marrowby
