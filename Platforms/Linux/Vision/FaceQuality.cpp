// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/FaceQuality.h"

#include <algorithm>
#include <cmath>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace marrowby {

namespace {

/// Side of the copy on which sharpness and exposure are measured, pixels.
constexpr int measuredSide = 112;
/// Variance of the Laplacian over the variance of the greys at which sharpness is 0.5. Measured:
/// 0.13 at full resolution, 0.03 at a quarter of it.
constexpr double halfSharp = 0.03;
/// Range of well-exposed mean greys; exposure falls to 0 over the margin outside.
constexpr double dark = 60;
constexpr double bright = 200;
constexpr double exposureMargin = 50;
/// Width of a face from which size no longer counts, pixels.
constexpr double largeEnough = 100;

}  // namespace

float faceQuality(const cv::Mat& bgr, const Rect& box, double score,
                  const std::optional<HeadPose>& pose) {
    const cv::Rect part =
        cv::Rect(cvFloor(box.x), cvFloor(box.y), cvCeil(box.width), cvCeil(box.height)) &
        cv::Rect(0, 0, bgr.cols, bgr.rows);
    if (part.empty()) return 0;
    cv::Mat face;
    cv::Mat grey;
    cv::resize(bgr(part), face, {measuredSide, measuredSide}, 0, 0,
               part.width > measuredSide ? cv::INTER_AREA : cv::INTER_LINEAR);
    cv::cvtColor(face, grey, cv::COLOR_BGR2GRAY);

    cv::Mat edges;
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::Laplacian(grey, edges, CV_32F);
    cv::meanStdDev(edges, mean, deviation);
    const double detail = deviation[0] * deviation[0];
    cv::meanStdDev(grey, mean, deviation);
    const double contrast = deviation[0] * deviation[0];
    const double sharpness = detail > 0 ? detail / (detail + halfSharp * contrast) : 0;

    const double level = mean[0];
    const double outside = std::max({dark - level, level - bright, 0.0});
    const double exposure = std::max(0.0, 1 - outside / exposureMargin);
    const double size = std::min(1.0, box.width / largeEnough);
    const double facing =
        pose ? std::max(0.0, std::cos(double{pose->yaw}) * std::cos(double{pose->pitch})) : 1;
    return static_cast<float>(std::clamp(score * sharpness * exposure * size * facing, 0.0, 1.0));
}

}  // namespace marrowby
