#pragma once

#include <string>
#include <variant>

namespace marrowby {

namespace facemodelerror {

struct NotFound {
    std::string fileName;
    friend bool operator==(const NotFound&, const NotFound&) = default;
};
struct LoadFailed {
    std::string reason;
    friend bool operator==(const LoadFailed&, const LoadFailed&) = default;
};
struct WrongModel {
    std::string reason;
    friend bool operator==(const WrongModel&, const WrongModel&) = default;
};
struct UnexpectedInput {
    std::string reason;
    friend bool operator==(const UnexpectedInput&, const UnexpectedInput&) = default;
};
struct UnexpectedOutput {
    std::string reason;
    friend bool operator==(const UnexpectedOutput&, const UnexpectedOutput&) = default;
};
struct PixelBuffer {
    friend bool operator==(const PixelBuffer&, const PixelBuffer&) = default;
};
/// The prediction itself failed; the text is the system's own.
struct PredictionFailed {
    std::string systemText;
    friend bool operator==(const PredictionFailed&, const PredictionFailed&) = default;
};

}  // namespace facemodelerror

/// Why the face model cannot be used, or gave no embedding for one face.
struct FaceModelError
    : std::variant<facemodelerror::NotFound, facemodelerror::LoadFailed, facemodelerror::WrongModel,
                   facemodelerror::UnexpectedInput, facemodelerror::UnexpectedOutput,
                   facemodelerror::PixelBuffer, facemodelerror::PredictionFailed> {
    using NotFound = facemodelerror::NotFound;
    using LoadFailed = facemodelerror::LoadFailed;
    using WrongModel = facemodelerror::WrongModel;
    using UnexpectedInput = facemodelerror::UnexpectedInput;
    using UnexpectedOutput = facemodelerror::UnexpectedOutput;
    using PixelBuffer = facemodelerror::PixelBuffer;
    using PredictionFailed = facemodelerror::PredictionFailed;
    using variant::variant;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const FaceModelError& error);

}  // namespace marrowby
