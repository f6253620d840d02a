// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Liveness/AntiSpoofScoring.h"
#include "UnlockCore/Platform/NeuralModel.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace marrowby {

/// The real-face model: two square crops of the face, 2.7 and 4 times its box, each 80 x 80 pixels,
/// to probabilities. Any thread; one prediction at a time. Immutable once loaded.
class MiniFASNet final : public AntiSpoofScoring {
  public:
    static constexpr std::string_view expectedIdentifier = "minifasnet-2020jul-coreml-1";
    static constexpr std::string_view defaultFileName = "MiniFASNet.mlmodelc";

    /// From the folder of the application's resources. Fails unless the file says that it is this
    /// model, or another of the same shape under its own identifier, and has the expected inputs
    /// and outputs; and, where that is given, the SHA-256.
    [[nodiscard]] static std::expected<std::unique_ptr<MiniFASNet>, RealFaceModelError> load(
        const std::filesystem::path& resources, NeuralModels& models,
        NeuralModels::ComputeUnits computeUnits = NeuralModels::ComputeUnits::all,
        std::string_view fileName = defaultFileName,
        std::string_view modelIdentifier = expectedIdentifier, const std::string& sha256 = {});

    [[nodiscard]] std::string_view modelIdentifier() const override { return identifier_; }
    [[nodiscard]] std::expected<AntiSpoofScore, RealFaceModelError> score(
        const RGBPixels& image, const Rect& faceBox) override EXCLUDES(mutex_);

  private:
    MiniFASNet(std::string identifier, std::unique_ptr<NeuralModel> model)
        : identifier_(std::move(identifier)), model_(std::move(model)) {}

    const std::string identifier_;
    Mutex mutex_;
    std::unique_ptr<NeuralModel> model_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
