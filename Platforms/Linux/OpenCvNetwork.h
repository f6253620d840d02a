#pragma once

#include "Platforms/Linux/OnnxFile.h"
#include "UnlockCore/Platform/NeuralModel.h"

#include <expected>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// A network that runs on the processor. One thread at a time. The errors are sentences for the
/// user.
class OpenCvNetwork {
  public:
    /// Three planes of `width` × `height` values, one after the other.
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

    /// All outputs, in the file's order.
    [[nodiscard]] std::expected<std::vector<NeuralOutput>, std::string> run(
        std::span<const Input> inputs);

  private:
    struct Net;
    explicit OpenCvNetwork(std::unique_ptr<Net> net);

    std::unique_ptr<Net> net_;
};

/// A picture's planes in the order blue, green, red or the reverse; nothing for a format that
/// cannot be read.
[[nodiscard]] std::optional<OpenCvNetwork::Input> networkInput(std::string name,
                                                               const Bitmap& image,
                                                               NeuralModels::ChannelOrder order);

}  // namespace marrowby
