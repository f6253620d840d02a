#pragma once

#include "UnlockCore/Recognition/FaceModelError.h"

#include <string>
#include <variant>

namespace marrowby {

namespace facerecognitionerror {

struct NoFace {
    friend bool operator==(const NoFace&, const NoFace&) = default;
};
struct CannotAlign {
    friend bool operator==(const CannotAlign&, const CannotAlign&) = default;
};
/// The search for faces itself failed; the text is the system's own.
struct DetectionFailed {
    std::string systemText;
    friend bool operator==(const DetectionFailed&, const DetectionFailed&) = default;
};

}  // namespace facerecognitionerror

/// Why a frame gave no recognised face.
struct FaceRecognitionError
    : std::variant<facerecognitionerror::NoFace, facerecognitionerror::CannotAlign, FaceModelError,
                   facerecognitionerror::DetectionFailed> {
    using NoFace = facerecognitionerror::NoFace;
    using CannotAlign = facerecognitionerror::CannotAlign;
    using DetectionFailed = facerecognitionerror::DetectionFailed;
    using variant::variant;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const FaceRecognitionError& error);

}  // namespace marrowby
