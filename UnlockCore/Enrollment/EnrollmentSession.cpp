// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Enrollment/EnrollmentSession.h"

#include "UnlockCore/Enrollment/HeadAngles.h"

#include <algorithm>
#include <cmath>

namespace marrowby {

namespace {

constexpr TimeInterval warmUp{1.5};
constexpr TimeInterval hold{0.5};
constexpr float worstQuality = 0.2F;
/// A sample needs more good frames in a row than this.
constexpr int framesBeforeSample = 2;
constexpr int samplesPerPose = 2;

std::optional<HeadAngles> angles(const EnrollmentFrame::Face& face) {
    if (!face.yaw || !face.pitch) return std::nullopt;
    // NaN counts as missing.
    if (!std::isfinite(*face.yaw) || !std::isfinite(*face.pitch)) return std::nullopt;
    return HeadAngles{.yaw = *face.yaw, .pitch = *face.pitch};
}

bool isGoodEnough(const EnrollmentFrame::Face& face) {
    if (face.quality && !(*face.quality >= worstQuality)) return false;
    return face.fivePointAligned && faceembedding::isUsable(face.embedding);
}

struct HintText {
    Phrase operator()(const EnrollmentSession::Hint::Pose& wanted) const {
        return prompt(wanted.pose);
    }
    Phrase operator()(const EnrollmentSession::Hint::TooFar& turn) const { return turn.text; }
    Phrase operator()(const EnrollmentSession::Hint::NoFace&) const {
        return Phrase("Look at the camera");
    }
    Phrase operator()(const EnrollmentSession::Hint::Closer&) const {
        return Phrase("Come a little closer");
    }
    Phrase operator()(const EnrollmentSession::Hint::Done&) const { return Phrase("Got it"); }
};

}  // namespace

Phrase text(const EnrollmentSession::Hint& hint) {
    return std::visit(HintText{}, hint);
}

EnrollmentSession::EnrollmentSession(Date now) : startedAt_(now), poseStartedAt_(now) {}

bool EnrollmentSession::isDone() const {
    return poseIndex_ >= allEnrollmentPoses.size();
}

double EnrollmentSession::progress() const {
    const double taken = static_cast<double>(poseIndex_) * samplesPerPose + capturedForPose_;
    return std::min(1.0, taken / static_cast<double>(allEnrollmentPoses.size() * samplesPerPose));
}

void EnrollmentSession::observe(const EnrollmentFrame& frame, Date now) {
    headTurn_.reset();
    if (isDone()) {
        hint_ = Hint::Done{};
        return;
    }
    std::visit([&](const auto& seen) { see(seen, now); }, frame);
}

void EnrollmentSession::see(const EnrollmentFrame::NoFace&, Date) {
    hint_ = Hint::NoFace{};
    resetHold();
}

void EnrollmentSession::see(const EnrollmentFrame::TooFar&, Date) {
    hint_ = Hint::Closer{};
    resetHold();
}

void EnrollmentSession::see(const EnrollmentFrame::Face& face, Date now) {
    const EnrollmentPose pose = allEnrollmentPoses.at(poseIndex_);
    hint_ = Hint::Pose{pose};
    const std::optional<HeadAngles> head = angles(face);
    if (!head) return resetHold();
    if (const auto correction = overTurnText(*head)) {
        hint_ = Hint::TooFar{*correction};
        return resetHold();
    }
    headTurn_ = guideDirection(pose, *head);
    const bool warm = now - startedAt_ >= warmUp;
    if (!warm || !isGoodEnough(face) ||
        !isHeld(pose, *head, toleranceFactor(pose, now - poseStartedAt_))) {
        return resetHold();
    }
    if (!holdStartedAt_) holdStartedAt_ = now;
    if (now - *holdStartedAt_ < hold) return;
    streak_ += 1;
    if (streak_ > framesBeforeSample) takeSample(face, now);
}

void EnrollmentSession::resetHold() {
    streak_ = 0;
    holdStartedAt_.reset();
}

void EnrollmentSession::takeSample(const EnrollmentFrame::Face& face, Date now) {
    const EnrollmentPose pose = allEnrollmentPoses.at(poseIndex_);
    streak_ = 0;
    samples_.push_back({.embedding = face.embedding,
                        .pose = std::string(rawValue(pose)),
                        .capturedAt = now,
                        .quality = face.quality});
    capturedForPose_ += 1;
    if (capturedForPose_ < samplesPerPose) return;

    if (pose != EnrollmentPose::center) capturedPoses_.insert(pose);
    poseIndex_ += 1;
    capturedForPose_ = 0;
    poseStartedAt_ = now;
    holdStartedAt_.reset();
    if (isDone()) {
        hint_ = Hint::Done{};
        headTurn_.reset();
    } else {
        hint_ = Hint::Pose{allEnrollmentPoses.at(poseIndex_)};
    }
}

}  // namespace marrowby
