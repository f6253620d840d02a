// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Scenes/Performance.h"
#include "UnlockCore/Enrollment/EnrollmentSession.h"
#include "UnlockCore/Foundation/Mutex.h"

#include <cstdint>
#include <string_view>

namespace marrowby {

/// What a user understands from the guide's sentence.
[[nodiscard]] EnrollmentSession::Hint hintSaying(std::string_view sentence);

/// A simulated user who follows the guide: after a reaction time turns the head, sometimes too far
/// at first, holds it, and exaggerates when it is not taken. Blinks and trembles. Times are since
/// the scene began and never go back. Any thread.
class SceneUser {
  public:
    /// `home` is where he sits, looking straight ahead.
    explicit SceneUser(std::uint64_t seed, const Placement& home = {.position = {.z = 0.55F}});

    /// The guide's current sentence; call with every frame, also where nothing changes.
    void heed(const EnrollmentSession::Hint& hint, TimeInterval now);
    /// Turns the head to one side and back, as a strict scan asks for.
    void turnHead(TimeInterval now);
    /// Into the picture, from beside it.
    void comeBack(TimeInterval now);

    [[nodiscard]] Stance at(TimeInterval now) const;

  private:
    /// One smooth movement.
    struct Motion {
        Placement from = {};
        Placement to = {};
        TimeInterval begins{};
        TimeInterval lasts{};
        /// Back again afterwards, over the same time.
        bool returns = false;
        /// How much farther it goes before it settles.
        float overshoot = 0;
    };

    [[nodiscard]] Placement placeAt(TimeInterval now) const REQUIRES(mutex_);
    void go(const Placement& to, TimeInterval now, TimeInterval lasts, bool returns = false)
        REQUIRES(mutex_);
    void aimAt(EnrollmentPose pose, TimeInterval now) REQUIRES(mutex_);

    const std::uint64_t seed_;
    const Placement home_;

    mutable Mutex mutex_;
    Motion motion_ GUARDED_BY(mutex_);
    EnrollmentSession::Hint heard_ GUARDED_BY(mutex_) = EnrollmentSession::Hint::NoFace{};
    TimeInterval heardAt_ GUARDED_BY(mutex_){};
    /// How often since.
    int heardAgain_ GUARDED_BY(mutex_) = 0;
    EnrollmentPose asked_ GUARDED_BY(mutex_) = EnrollmentPose::center;
    /// 1 is the first attempt's.
    float effort_ GUARDED_BY(mutex_) = 1;
    std::uint64_t movements_ GUARDED_BY(mutex_) = 0;
};

}  // namespace marrowby
