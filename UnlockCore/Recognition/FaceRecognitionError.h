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

/// The face reaches so far over the picture's edge that it couldn't be lined up.
struct CutOff {
    friend bool operator==(const CutOff&, const CutOff&) = default;
};

}  // namespace facerecognitionerror

/// Why a frame gave no recognised face.
struct FaceRecognitionError
    : std::variant<facerecognitionerror::NoFace, facerecognitionerror::CannotAlign, FaceModelError,
                   facerecognitionerror::DetectionFailed, facerecognitionerror::CutOff> {
    using NoFace = facerecognitionerror::NoFace;
    using CannotAlign = facerecognitionerror::CannotAlign;
    using DetectionFailed = facerecognitionerror::DetectionFailed;
    using CutOff = facerecognitionerror::CutOff;
    using variant::variant;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const FaceRecognitionError& error);

}  // namespace marrowby
