// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Enrollment/EnrollmentPose.h"
#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"
#include "UnlockCore/Recognition/FaceIdentity.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace marrowby {

namespace enrollmentframe {

struct Face {
    /// Radians: yaw positive to the person's left, pitch negative up.
    std::optional<float> yaw;
    std::optional<float> pitch;
    /// Capture quality, 0…1.
    std::optional<float> quality;
    /// The crop was aligned on all five points, not only on the eyes.
    bool fivePointAligned = false;
    Embedding embedding;
    friend bool operator==(const Face&, const Face&) = default;
};
struct NoFace {
    friend bool operator==(const NoFace&, const NoFace&) = default;
};
/// The face is too small: too far from the camera.
struct TooFar {
    friend bool operator==(const TooFar&, const TooFar&) = default;
};

}  // namespace enrollmentframe

/// What one camera frame of an enrolment shows.
struct EnrollmentFrame
    : std::variant<enrollmentframe::Face, enrollmentframe::NoFace, enrollmentframe::TooFar> {
    using Face = enrollmentframe::Face;
    using NoFace = enrollmentframe::NoFace;
    using TooFar = enrollmentframe::TooFar;
    using variant::variant;
};

namespace enrollmenthint {

struct Pose {
    EnrollmentPose pose = EnrollmentPose::center;
    friend bool operator==(const Pose&, const Pose&) = default;
};
/// The head is turned too far.
struct TooFar {
    Phrase text;
    friend bool operator==(const TooFar&, const TooFar&) = default;
};
struct NoFace {
    friend bool operator==(const NoFace&, const NoFace&) = default;
};
struct Closer {
    friend bool operator==(const Closer&, const Closer&) = default;
};
struct Done {
    friend bool operator==(const Done&, const Done&) = default;
};

}  // namespace enrollmenthint

/// Guides one person through the enrolment poses and takes two samples of their face in each. A
/// value; no camera, no clock.
class EnrollmentSession {
  public:
    /// What to tell the user now.
    struct Hint : std::variant<enrollmenthint::Pose, enrollmenthint::TooFar, enrollmenthint::NoFace,
                               enrollmenthint::Closer, enrollmenthint::Done> {
        using Pose = enrollmenthint::Pose;
        using TooFar = enrollmenthint::TooFar;
        using NoFace = enrollmenthint::NoFace;
        using Closer = enrollmenthint::Closer;
        using Done = enrollmenthint::Done;
        using variant::variant;
    };

    explicit EnrollmentSession(Date now);

    /// Takes in one frame; `now` is when it is processed.
    void observe(const EnrollmentFrame& frame, Date now);

    [[nodiscard]] const Hint& hint() const { return hint_; }
    /// 0…1.
    [[nodiscard]] double progress() const;
    /// In the order taken: two for each pose.
    [[nodiscard]] const std::vector<FaceSample>& samples() const { return samples_; }
    /// The finished poses around the centre; the centre itself is never in it.
    [[nodiscard]] const std::set<EnrollmentPose>& capturedPoses() const { return capturedPoses_; }
    /// Where the guide points, as guideDirection() has it; nothing when there is nothing to guide.
    [[nodiscard]] std::optional<double> headTurn() const { return headTurn_; }
    [[nodiscard]] bool isDone() const;

  private:
    void see(const EnrollmentFrame::Face& face, Date now);
    void see(const EnrollmentFrame::NoFace& nothing, Date now);
    void see(const EnrollmentFrame::TooFar& small, Date now);
    void resetHold();
    void takeSample(const EnrollmentFrame::Face& face, Date now);

    std::size_t poseIndex_ = 0;
    int capturedForPose_ = 0;
    std::vector<FaceSample> samples_;
    std::set<EnrollmentPose> capturedPoses_;
    Hint hint_ = Hint::Pose{EnrollmentPose::center};
    std::optional<double> headTurn_;
    Date startedAt_;
    Date poseStartedAt_;
    std::optional<Date> holdStartedAt_;
    int streak_ = 0;
};

[[nodiscard]] Phrase text(const EnrollmentSession::Hint& hint);

}  // namespace marrowby
