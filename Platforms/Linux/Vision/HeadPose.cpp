// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/HeadPose.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>

namespace marrowby {

namespace {

struct HeadPoint {
    std::size_t index;
    float x;
    float y;
    float z;
};

/// A generic head in millimetres, origin between the eyes, in camera axes: x right, y down, z away
/// from the camera. Average adult proportions, rounded after a fit to seven synthetic heads at
/// known angles. The contour's ends, in front of the ears, separate pitch from nose length; the
/// chin's depth is that of the outline, which slides along the jaw.
constexpr std::array genericHead{
    HeadPoint{0, -78, -10, 59},   HeadPoint{32, 78, -10, 59},  HeadPoint{14, -17, 97, 14},
    HeadPoint{15, -9, 99, 8},     HeadPoint{16, 0, 99, 5},     HeadPoint{17, 9, 99, 8},
    HeadPoint{18, 17, 97, 14},    HeadPoint{33, -52, -15, 7},  HeadPoint{46, 52, -15, 7},
    HeadPoint{37, -12, -20, -11}, HeadPoint{42, 12, -20, -11}, HeadPoint{38, -12, -14, -11},
    HeadPoint{50, 12, -14, -11},  HeadPoint{51, 0, -1, -15},   HeadPoint{52, 0, 12, -24},
    HeadPoint{53, 0, 25, -33},    HeadPoint{54, 0, 36, -41},   HeadPoint{55, -14, 41, -18},
    HeadPoint{59, 14, 41, -18},   HeadPoint{60, -45, -1, 4},   HeadPoint{72, 45, -1, 4},
    HeadPoint{62, -32, -6, -3},   HeadPoint{70, 32, -6, -3},   HeadPoint{64, -18, 1, -4},
    HeadPoint{68, 18, 1, -4},     HeadPoint{66, -32, 5, -3},   HeadPoint{74, 32, 5, -3},
    HeadPoint{96, -31, -1, -1},   HeadPoint{97, 31, -1, -1},
};

/// A usual webcam's focal length (about 68° field of view) over the image's long side.
constexpr double focalLength = 0.74;

}  // namespace

std::optional<HeadPose> headPose(const Landmarks98& points, const Size& imageSize) {
    std::vector<cv::Point3d> head;
    std::vector<cv::Point2d> seen;
    cv::Point2d middle;
    for (const HeadPoint& point : genericHead) {
        head.emplace_back(point.x, point.y, point.z);
        seen.emplace_back(points[point.index].x, points[point.index].y);
        middle += seen.back();
    }
    middle /= static_cast<double>(seen.size());

    // With the optical axis through the face the angles are relative to the line of sight.
    const double focal = focalLength * std::max(imageSize.width, imageSize.height);
    const cv::Matx33d camera(focal, 0, middle.x, 0, focal, middle.y, 0, 0, 1);
    try {
        cv::Vec3d rotation;
        cv::Vec3d translation;
        if (!cv::solvePnP(head, seen, camera, cv::noArray(), rotation, translation, false,
                          cv::SOLVEPNP_SQPNP) ||
            !cv::solvePnP(head, seen, camera, cv::noArray(), rotation, translation, true,
                          cv::SOLVEPNP_ITERATIVE)) {
            return std::nullopt;
        }
        cv::Matx33d r;
        cv::Rodrigues(rotation, r);
        // r = Ry(yaw) Rx(pitch) Rz(roll), in axes with y down and z away.
        const HeadPose pose{.yaw = static_cast<float>(std::atan2(-r(0, 2), r(2, 2))),
                            .pitch = static_cast<float>(std::asin(std::clamp(-r(1, 2), -1.0, 1.0))),
                            .roll = static_cast<float>(std::atan2(-r(1, 0), r(1, 1)))};
        const bool isSensible =
            translation[2] > 0 && std::isfinite(pose.yaw + pose.pitch) && std::isfinite(pose.roll);
        return isSensible ? std::optional(pose) : std::nullopt;
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
}

}  // namespace marrowby
