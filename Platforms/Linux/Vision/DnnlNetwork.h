// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Vision/OnnxGraph.h"
#include "UnlockCore/Platform/NeuralModel.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// A network of convolutions and small operators, run by oneDNN on the calling thread: three to
/// four times as fast as OpenCV's. One thread at a time, any one.
class DnnlNetwork {
  public:
    /// Three planes, one after the other.
    struct Image {
        std::string name;
        std::int64_t width = 0;
        std::int64_t height = 0;
        std::span<const float> planes;
    };

    /// Nothing where an operator, or how it is used, is not known here, or oneDNN the processor.
    [[nodiscard]] static std::optional<DnnlNetwork> create(OnnxGraph graph,
                                                           std::vector<std::string> outputs);
    DnnlNetwork(DnnlNetwork&&) noexcept;
    DnnlNetwork& operator=(DnnlNetwork&&) noexcept;
    ~DnnlNetwork();

    /// Drops what oneDNN keeps for networks like those that have been. Any thread.
    static void forgetUnused();

    /// Fills the outputs in the order given. Plans anew where the sizes differ from the last run's.
    /// False where the sizes do not fit; throws what oneDNN throws.
    [[nodiscard]] bool run(std::span<const Image> images, std::span<NeuralOutput> outputs);

  private:
    struct Plan;
    class Planner;
    DnnlNetwork(OnnxGraph graph, std::vector<std::string> outputs);

    OnnxGraph graph_;
    std::vector<std::string> outputs_;
    std::unique_ptr<Plan> plan_;
};

}  // namespace marrowby
