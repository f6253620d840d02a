// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/NeuralModel.h"

namespace marrowby {

/// ONNX models on the CPU, whatever compute units are requested. An input of 1 × 3 × height × width
/// floats is an image; metadata come from the file.
class OpenCvNeuralModels final : public NeuralModels {
  public:
    [[nodiscard]] std::expected<std::unique_ptr<NeuralModel>, std::string> load(
        const std::filesystem::path& file, const Options& options) override;
};

}  // namespace marrowby
