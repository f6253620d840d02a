#pragma once

#include "Platforms/Linux/OpenCvNetwork.h"

#include <string>

#include <opencv2/core/mat.hpp>

namespace marrowby {

/// An 8-bit blue, green, red picture as a network's planes.
[[nodiscard]] OpenCvNetwork::Input planesOf(std::string name, const cv::Mat& bgr,
                                            NeuralModels::ChannelOrder order);

}  // namespace marrowby
