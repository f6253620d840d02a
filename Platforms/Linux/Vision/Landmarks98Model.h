// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Vision/OnnxModel.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/WorkQueues.h"

#include <array>
#include <expected>
#include <filesystem>
#include <string>
#include <utility>

namespace cv {
class Mat;
}

namespace marrowby {

/// 98 landmarks in WFLW order (https://wywu.github.io/projects/LAB/WFLW.html): contour 0-32, brows
/// 33-50, nose 51-59, eyes 60-75, lips 76-95, pupils 96 and 97; image-left before image-right.
using Landmarks98 = std::array<Point, 98>;

/// Finds the 98 landmarks of a detected face. One thread at a time.
class Landmarks98Model {
  public:
    [[nodiscard]] static std::expected<Landmarks98Model, std::string> load(const OnnxSource& from);

    /// `box` and landmarks in pixels, origin at the top-left. Averages the face and its mirror
    /// image, in parallel with a helper: the model is asymmetric, and the mean takes about 0.05 rad
    /// off the angle error of a turned head.
    [[nodiscard]] std::expected<Landmarks98, std::string> find(const cv::Mat& bgr, const Rect& box,
                                                               WorkQueue* helper = nullptr);

  private:
    /// A model instance for the face or for its mirror image.
    struct View {
        OnnxModel model;
        OnnxModel::Input input{.name = "image", .planes = {}};

        /// Landmarks in 0…1 of the crop.
        [[nodiscard]] std::expected<Landmarks98, std::string> run(const cv::Mat& crop);
    };

    Landmarks98Model(OnnxModel straight, OnnxModel mirrored)
        : straight_{std::move(straight)}, mirrored_{std::move(mirrored)} {}

    View straight_;
    View mirrored_;
};

}  // namespace marrowby
