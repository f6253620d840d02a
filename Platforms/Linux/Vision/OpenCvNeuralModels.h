#pragma once

#include "UnlockCore/Platform/NeuralModel.h"

namespace marrowby {

/// Networks from ONNX files, on the processor whatever the options ask for. An input of 1 × 3 ×
/// height × width floats is an image; metadata are the file's own.
class OpenCvNeuralModels final : public NeuralModels {
  public:
    [[nodiscard]] std::expected<std::unique_ptr<NeuralModel>, std::string> load(
        const std::filesystem::path& file, const Options& options) override;
};

}  // namespace marrowby
