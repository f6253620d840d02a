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

/// A network that runs on the calling thread, one at a time. The errors are sentences for the user.
/// OpenCV's own threads are switched off for the whole process: on networks as small as these they
/// take twice the processor's time and end no sooner, while two networks run side by side in the
/// time of one.
class OpenCvNetwork {
  public:
    /// A picture for one input, which may be filled again and again: three planes of `width` ×
    /// `height` values, one after the other.
    struct Input {
        std::string name;
        int width = 0;
        int height = 0;
        std::vector<float> planes;
    };

    [[nodiscard]] static std::expected<OpenCvNetwork, std::string> load(const OnnxFile& file);
    OpenCvNetwork(OpenCvNetwork&&) noexcept;
    OpenCvNetwork& operator=(OpenCvNetwork&&) noexcept;
    ~OpenCvNetwork();

    /// All outputs, in the file's order; they hold until the next run.
    [[nodiscard]] std::expected<std::span<const NeuralOutput>, std::string> run(
        std::span<const Input> inputs);

  private:
    struct Net;
    explicit OpenCvNetwork(std::unique_ptr<Net> net);

    std::unique_ptr<Net> net_;
};

/// Fills an input with a picture, in the order blue, green, red or the reverse; false for a format
/// that cannot be read.
[[nodiscard]] bool fillInput(OpenCvNetwork::Input& input, const Bitmap& image,
                             NeuralModels::ChannelOrder order);

/// Fills an input with an 8-bit blue, green, red picture.
void fillPlanes(OpenCvNetwork::Input& input, const cv::Mat& bgr, NeuralModels::ChannelOrder order);

}  // namespace marrowby
