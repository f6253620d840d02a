#pragma once

#include "Platforms/Linux/Vision/OpenCvNetwork.h"
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

/// The YuNet face detector (https://doi.org/10.1007/s11633-023-1423-y), 2023 network. One thread at
/// a time.
class YuNetFaceFinder {
  public:
    /// In the picture's pixels, origin at the top-left; may reach past its edges.
    struct Face {
        Rect box;
        /// Eye, eye, nose, mouth corner, mouth corner; the left ones of the image first.
        std::array<Point, 5> points;
        /// 0…1.
        double score = 0;
    };

    [[nodiscard]] static std::expected<YuNetFaceFinder, std::string> load(const NetworkFile& from);

    /// The most certain first. Pictures are searched at no more than 320 pixels on their long side,
    /// where a face of about 20 pixels is still found.
    [[nodiscard]] std::expected<std::vector<Face>, std::string> find(const cv::Mat& bgr);

  private:
    explicit YuNetFaceFinder(OpenCvNetwork network) : network_(std::move(network)) {}

    OpenCvNetwork network_;
    OpenCvNetwork::Input input_{.name = "input", .planes = {}};
};

}  // namespace marrowby
