#pragma once

#include <string>
#include <variant>

namespace marrowby {

namespace realfacemodelerror {

struct NotFound {
    std::string resource;
    friend bool operator==(const NotFound&, const NotFound&) = default;
};
struct LoadFailed {
    std::string detail;
    friend bool operator==(const LoadFailed&, const LoadFailed&) = default;
};
struct WrongModel {
    std::string detail;
    friend bool operator==(const WrongModel&, const WrongModel&) = default;
};
struct UnexpectedInput {
    std::string detail;
    friend bool operator==(const UnexpectedInput&, const UnexpectedInput&) = default;
};
struct UnexpectedOutput {
    std::string detail;
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

}  // namespace realfacemodelerror

/// Why the real-face model cannot be used, or gave no score for one face.
struct RealFaceModelError
    : std::variant<realfacemodelerror::NotFound, realfacemodelerror::LoadFailed,
                   realfacemodelerror::WrongModel, realfacemodelerror::UnexpectedInput,
                   realfacemodelerror::UnexpectedOutput, realfacemodelerror::PixelBuffer,
                   realfacemodelerror::PredictionFailed> {
    using NotFound = realfacemodelerror::NotFound;
    using LoadFailed = realfacemodelerror::LoadFailed;
    using WrongModel = realfacemodelerror::WrongModel;
    using UnexpectedInput = realfacemodelerror::UnexpectedInput;
    using UnexpectedOutput = realfacemodelerror::UnexpectedOutput;
    using PixelBuffer = realfacemodelerror::PixelBuffer;
    using PredictionFailed = realfacemodelerror::PredictionFailed;
    using variant::variant;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const RealFaceModelError& error);

}  // namespace marrowby
