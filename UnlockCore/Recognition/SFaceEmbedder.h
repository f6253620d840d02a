// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Platform/NeuralModel.h"
#include "UnlockCore/Recognition/FaceEmbedder.h"

#include <filesystem>
#include <memory>
#include <string>

namespace marrowby {

/// The SFace model (https://arxiv.org/abs/2205.12010), or another of the same shape under its own
/// identifier: input "image", 112 × 112, output "embedding", 128 values. It is checked once, when
/// loaded.
class SFaceEmbedder final : public FaceEmbedder {
  public:
    /// The application's model file.
    struct Resource {
        std::string fileName = "SFace.mlmodelc";
        std::string modelIdentifier = "sface-2021dec-coreml-1";
        /// Of the file; empty takes any.
        std::string sha256 = {};
    };
    static constexpr std::int64_t embeddingLength = 128;

    /// From the folder of the application's resources, on all compute units. `imaging` outlives the
    /// embedder.
    [[nodiscard]] static std::expected<std::unique_ptr<SFaceEmbedder>, FaceModelError> load(
        const std::filesystem::path& resources, const Resource& resource, NeuralModels& models,
        const Imaging& imaging);

    /// `modelIdentifier`: what the file must say it is.
    [[nodiscard]] static std::expected<std::unique_ptr<SFaceEmbedder>, FaceModelError> load(
        const std::filesystem::path& modelFile, NeuralModels::ComputeUnits computeUnits,
        const std::string& modelIdentifier, NeuralModels& models, const Imaging& imaging,
        const std::string& sha256 = {});

    [[nodiscard]] const std::string& modelIdentifier() const override { return modelIdentifier_; }
    [[nodiscard]] std::int64_t dimension() const override { return embeddingLength; }
    [[nodiscard]] std::expected<Embedding, FaceModelError> embed(
        const Bitmap& alignedFace) override;

  private:
    SFaceEmbedder(std::string modelIdentifier, std::unique_ptr<NeuralModel> model,
                  const Imaging& imaging);

    const std::string modelIdentifier_;
    const Imaging& imaging_;
    Mutex mutex_;
    const std::unique_ptr<NeuralModel> model_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
