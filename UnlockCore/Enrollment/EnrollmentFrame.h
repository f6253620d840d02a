#pragma once

#include "UnlockCore/Recognition/FaceEmbedding.h"

#include <optional>
#include <variant>

namespace marrowby {

namespace enrollmentframe {

struct Face {
    /// Radians: yaw positive to the person's left, pitch negative up.
    std::optional<float> yaw;
    std::optional<float> pitch;
    /// Capture quality, 0…1.
    std::optional<float> quality;
    /// The crop was aligned on all five points, not only on the eyes.
    bool fivePointAligned = false;
    Embedding embedding;
    friend bool operator==(const Face&, const Face&) = default;
};
struct NoFace {
    friend bool operator==(const NoFace&, const NoFace&) = default;
};
/// The face is too small: too far from the camera.
struct TooFar {
    friend bool operator==(const TooFar&, const TooFar&) = default;
};

}  // namespace enrollmentframe

/// What one camera frame of an enrolment shows.
struct EnrollmentFrame
    : std::variant<enrollmentframe::Face, enrollmentframe::NoFace, enrollmentframe::TooFar> {
    using Face = enrollmentframe::Face;
    using NoFace = enrollmentframe::NoFace;
    using TooFar = enrollmentframe::TooFar;
    using variant::variant;
};

}  // namespace marrowby
