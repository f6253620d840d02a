// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <string>
#include <string_view>
#include <variant>

namespace marrowby {

namespace modelerror {

struct NotFound {
    std::string fileName;
    /// Where it was expected, and what to do.
    Phrase place = Phrase("in the app");
    Phrase remedy = Phrase("Reinstall Marrowby Unlock.");
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
/// No buffer for the model's input.
struct PixelBuffer {
    friend bool operator==(const PixelBuffer&, const PixelBuffer&) = default;
};
/// The text is the system's own.
struct PredictionFailed {
    std::string systemText;
    friend bool operator==(const PredictionFailed&, const PredictionFailed&) = default;
};

/// Which model failed; its sentences name it.
enum class Model { face, realFace };

/// Why a model cannot be used, or gave no result for one face.
template <Model model>
struct Error : std::variant<NotFound, LoadFailed, WrongModel, UnexpectedInput, UnexpectedOutput,
                            PixelBuffer, PredictionFailed> {
    using NotFound = modelerror::NotFound;
    using LoadFailed = modelerror::LoadFailed;
    using WrongModel = modelerror::WrongModel;
    using UnexpectedInput = modelerror::UnexpectedInput;
    using UnexpectedOutput = modelerror::UnexpectedOutput;
    using PixelBuffer = modelerror::PixelBuffer;
    using PredictionFailed = modelerror::PredictionFailed;
    using Error::variant::variant;
};

}  // namespace modelerror

using FaceModelError = modelerror::Error<modelerror::Model::face>;
using RealFaceModelError = modelerror::Error<modelerror::Model::realFace>;

[[nodiscard]] std::string description(const FaceModelError& error);
[[nodiscard]] std::string description(const RealFaceModelError& error);

}  // namespace marrowby
