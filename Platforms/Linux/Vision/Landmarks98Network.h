#pragma once

#include "Platforms/Linux/Vision/OpenCvNetwork.h"
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

/// 98 points of a face in the order of the WFLW collection
/// (https://wywu.github.io/projects/LAB/WFLW.html): contour 0-32, brows 33-50, nose 51-59, eyes
/// 60-75, lips 76-95, pupils 96 and 97; of two sides the left one of the image first.
using Landmarks98 = std::array<Point, 98>;

/// Finds the 98 points of a detected face. One thread at a time.
class Landmarks98Network {
  public:
    [[nodiscard]] static std::expected<Landmarks98Network, std::string> load(
        const NetworkFile& from);

    /// `box` and the points are in the picture's pixels, origin at the top-left. The network looks
    /// at the face and at its mirror image, because it does not treat the two sides alike: the mean
    /// does, and takes some 0.05 rad of error off the angles of a turned head.
    /// With a helper it looks at both at once.
    [[nodiscard]] std::expected<Landmarks98, std::string> find(const cv::Mat& bgr, const Rect& box,
                                                               WorkQueue* helper = nullptr);

  private:
    /// The network for one of the two.
    struct View {
        OpenCvNetwork network;
        OpenCvNetwork::Input input{.name = "image", .planes = {}};

        /// The points in 0…1 of the network's square.
        [[nodiscard]] std::expected<Landmarks98, std::string> run(const cv::Mat& crop);
    };

    Landmarks98Network(OpenCvNetwork straight, OpenCvNetwork mirrored)
        : straight_{std::move(straight)}, mirrored_{std::move(mirrored)} {}

    View straight_;
    View mirrored_;
};

}  // namespace marrowby
