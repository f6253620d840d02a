#pragma once

namespace marrowby {

/// The parts of a face that a landmark finder reports, left and right as the finder names them; the
/// position in the list is the region's index.
enum class LandmarkRegion {
    leftEye,
    rightEye,
    leftEyebrow,
    rightEyebrow,
    nose,
    noseCrest,
    outerLips,
    innerLips,
    faceContour,
    medianLine,
};

}  // namespace marrowby
