#pragma once

#include "Platforms/Linux/OpenCvNetwork.h"

#include <opencv2/core/mat.hpp>

namespace marrowby {

/// Fills an input with an 8-bit blue, green, red picture.
void fillPlanes(OpenCvNetwork::Input& input, const cv::Mat& bgr, NeuralModels::ChannelOrder order);

}  // namespace marrowby
