#pragma once

#include "UnlockCore/Platform/NeuralModel.h"

namespace marrowby {

/// Compiled Core ML models (“.mlmodelc”), which say themselves in which order they take an image’s
/// channels. Loading for all compute units may take seconds the first time, while the system
/// prepares the network for the neural engine. Each image lies in a buffer of the system’s that all
/// processors share. Exceptions come back as errors.
class CoreMLNeuralModels final : public NeuralModels {
  public:
    [[nodiscard]] std::expected<std::unique_ptr<NeuralModel>, std::string> load(
        const std::filesystem::path& file, const Options& options) override;
};

}  // namespace marrowby
