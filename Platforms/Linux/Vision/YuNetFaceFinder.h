// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Vision/OnnxModel.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <array>
#include <expected>
#include <filesystem>
#include <string>
#include <vector>

namespace cv {
class Mat;
}

namespace marrowby {

/// The YuNet face detector (https://doi.org/10.1007/s11633-023-1423-y), model of 2023. One thread
/// at a time.
class YuNetFaceFinder {
  public:
    /// In pixels, origin at the top-left; may exceed the picture.
    struct Face {
        Rect box;
        /// Two eyes, nose, two mouth corners; image-left first.
        std::array<Point, 5> points;
        /// 0…1.
        double score = 0;
    };

    [[nodiscard]] static std::expected<YuNetFaceFinder, std::string> load(const OnnxSource& from);

    /// Sorted by descending score. Pictures are reduced to 320 pixels on the long side, where a
    /// face of about 20 pixels is still found.
    [[nodiscard]] std::expected<std::vector<Face>, std::string> find(const cv::Mat& bgr);

  private:
    explicit YuNetFaceFinder(OnnxModel model) : model_(std::move(model)) {}

    OnnxModel model_;
    OnnxModel::Input input_{.name = "input", .planes = {}};
};

}  // namespace marrowby
