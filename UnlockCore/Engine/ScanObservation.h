// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/MatchedFace.h"
#include "UnlockCore/Liveness/LivenessDecision.h"

#include <optional>
#include <variant>

namespace marrowby {

namespace scanobservation {

struct Face {
    /// Empty when the face matched no enrolled identity.
    std::optional<MatchedFace> match;
    LivenessDecision decision;
    friend bool operator==(const Face&, const Face&) = default;
};
struct NoFace {
    friend bool operator==(const NoFace&, const NoFace&) = default;
};

/// A face that reaches too far over the picture's edge to be used.
struct CutOff {
    friend bool operator==(const CutOff&, const CutOff&) = default;
};

}  // namespace scanobservation

/// What one analysed camera frame showed: a face, or no usable one.
struct ScanObservation
    : std::variant<scanobservation::Face, scanobservation::NoFace, scanobservation::CutOff> {
    using Face = scanobservation::Face;
    using NoFace = scanobservation::NoFace;
    using CutOff = scanobservation::CutOff;
    using variant::variant;
};

}  // namespace marrowby
