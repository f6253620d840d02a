// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/OpenCvFourierTransform.h"

#include <array>

#include <opencv2/core.hpp>

namespace marrowby {

bool OpenCvFourierTransform::forward(Plane real, Plane imaginary) const {
    try {
        cv::Mat values(side, side, CV_32FC2);
        auto* pairs = values.ptr<cv::Vec2f>();
        for (std::size_t i = 0; i < count; ++i)
            pairs[i] = {real[i], imaginary[i]};
        cv::dft(values, values);
        for (std::size_t i = 0; i < count; ++i) {
            real[i] = pairs[i][0];
            imaginary[i] = pairs[i][1];
        }
        return true;
    } catch (const cv::Exception&) {
        return false;
    }
}

}  // namespace marrowby
