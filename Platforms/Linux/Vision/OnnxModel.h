// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Vision/OnnxFile.h"
#include "UnlockCore/Platform/NeuralModel.h"

#include <expected>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace cv {
class Mat;
}

namespace marrowby {

/// A model that runs on the calling thread, one at a time. Errors are sentences for the user.
/// Switches off OpenCV's threads for the whole process: with models this small they take twice the
/// CPU time and finish no sooner.
class OnnxModel {
  public:
    /// A reusable input: three planes of `width` × `height` values, one after the other.
    struct Input {
        std::string name;
        int width = 0;
        int height = 0;
        std::vector<float> planes;
    };

    /// Who runs it. OpenCV is several times as slow, but knows more operators.
    enum class Engine { oneDnn, openCv };

    [[nodiscard]] static std::expected<OnnxModel, std::string> load(
        const OnnxFile& file, Engine preferred = Engine::oneDnn);
    OnnxModel(OnnxModel&&) noexcept;
    OnnxModel& operator=(OnnxModel&&) noexcept;
    ~OnnxModel();

    /// Returns what unloaded models leave behind to the system. Any thread.
    static void trimMemory();

    [[nodiscard]] Engine engine() const;
    /// All outputs in the file's order; valid until the next run.
    [[nodiscard]] std::expected<std::span<const NeuralOutput>, std::string> run(
        std::span<const Input> inputs);

  private:
    struct Net;
    explicit OnnxModel(std::unique_ptr<Net> net);

    std::unique_ptr<Net> net_;
};

/// Fills an input from a bitmap, as BGR or RGB; false for an unreadable format.
[[nodiscard]] bool fillInput(OnnxModel::Input& input, const Bitmap& image,
                             NeuralModels::ChannelOrder order);

void fillPlanes(OnnxModel::Input& input, const cv::Mat& bgr, NeuralModels::ChannelOrder order);

}  // namespace marrowby
