// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/NeuralModel.h"

namespace marrowby {

/// Compiled Core ML models (“.mlmodelc”), which define the channel order of their images. The first
/// load for all compute units may take seconds while the system prepares the model for the Neural
/// Engine. Images are passed in pixel buffers shared by all processors. Exceptions become errors.
class CoreMLNeuralModels final : public NeuralModels {
  public:
    [[nodiscard]] std::expected<std::unique_ptr<NeuralModel>, std::string> load(
        const std::filesystem::path& file, const Options& options) override;
};

}  // namespace marrowby
