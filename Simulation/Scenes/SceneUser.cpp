// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/SceneUser.h"

#include "Simulation/Scenes/Chance.h"
#include "Simulation/Scenes/Movement.h"
#include "Simulation/Scenes/Performance.h"
#include "UnlockCore/Foundation/Fatal.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <variant>

namespace marrowby {

namespace {

constexpr TimeInterval understanding{0.25};
constexpr TimeInterval turning{0.55};
constexpr TimeInterval walking{0.9};
/// The wait before trying harder, the frames that must have passed meanwhile, and the increase.
constexpr TimeInterval patience{2.0};
constexpr int patientPictures = 15;
constexpr float harder = 1.1F;

constexpr float usualYaw = 0.36F;
constexpr float usualPitch = 0.26F;
constexpr float promptYaw = 0.30F;

/// In which direction a pose turns the head: 1 to his left and down.
struct Direction {
    float yaw = 0;
    float pitch = 0;
};

Direction directionOf(EnrollmentPose pose) {
    switch (pose) {
        case EnrollmentPose::center:
            return {0, 0};
        case EnrollmentPose::left:
            return {1, 0};
        case EnrollmentPose::topLeft:
            return {1, -1};
        case EnrollmentPose::top:
            return {0, -1};
        case EnrollmentPose::topRight:
            return {-1, -1};
        case EnrollmentPose::right:
            return {-1, 0};
        case EnrollmentPose::bottomRight:
            return {-1, 1};
        case EnrollmentPose::bottom:
            return {0, 1};
        case EnrollmentPose::bottomLeft:
            return {1, 1};
    }
    fatal("not an enrolment pose");
}

Placement away(const Placement& home) {
    Placement place = home;
    place.position = place.position + Vector3{.x = 1.1F, .y = 0.05F, .z = 0.5F};
    place.yaw = 0.7F;
    return place;
}

}  // namespace

EnrollmentSession::Hint hintSaying(std::string_view sentence) {
    using Hint = EnrollmentSession::Hint;
    for (const EnrollmentPose pose : allEnrollmentPoses) {
        if (translated(prompt(pose)) == sentence) return Hint::Pose{pose};
    }
    for (const Hint& hint : {Hint(Hint::NoFace{}), Hint(Hint::Closer{}), Hint(Hint::Done{})}) {
        if (translated(text(hint)) == sentence) return hint;
    }
    return Hint::TooFar{};
}

SceneUser::SceneUser(std::uint64_t seed, const Placement& home)
    : seed_(seed), home_(home), motion_{.from = home, .to = home} {}

void SceneUser::heed(const EnrollmentSession::Hint& hint, TimeInterval now) {
    using Hint = EnrollmentSession::Hint;
    const MutexLock lock(mutex_);
    if (hint.index() == heard_.index() && hint == heard_) {
        if (++heardAgain_ < patientPictures || now - heardAt_ < patience) return;
        // Not taken yet: exaggerate.
        effort_ = std::min(effort_ * harder, 1.5F);
    } else if (const auto* pose = std::get_if<Hint::Pose>(&hint); pose && pose->pose != asked_) {
        asked_ = pose->pose;
        effort_ = 1;
    } else if (std::holds_alternative<Hint::TooFar>(hint)) {
        effort_ *= 0.85F;
    } else if (std::holds_alternative<Hint::Pose>(hint) &&
               !std::holds_alternative<Hint::NoFace>(heard_)) {
        // Came back from too far: keep that.
        heard_ = hint;
        heardAt_ = now;
        heardAgain_ = 0;
        return;
    }
    heard_ = hint;
    heardAt_ = now;
    heardAgain_ = 0;
    if (std::holds_alternative<Hint::Closer>(hint)) {
        Placement nearer = placeAt(now);
        nearer.position.z *= 0.8F;
        go(nearer, now, turning);
    } else if (std::holds_alternative<Hint::Done>(hint)) {
        go(home_, now, turning);
    } else {
        aimAt(asked_, now);
    }
}

void SceneUser::aimAt(EnrollmentPose pose, TimeInterval now) {
    const Direction direction = directionOf(pose);
    Placement place = home_;
    place.position.z = std::min(place.position.z, placeAt(now).position.z);
    place.yaw = direction.yaw * usualYaw * effort_;
    place.pitch = direction.pitch * usualPitch * effort_;
    go(place, now + understanding, turning);
}

void SceneUser::turnHead(TimeInterval now) {
    const MutexLock lock(mutex_);
    Placement place = home_;
    place.yaw = (seed_ % 2 == 0 ? 1.0F : -1.0F) * promptYaw;
    go(place, now + understanding, turning, true);
}

void SceneUser::comeBack(TimeInterval now) {
    const MutexLock lock(mutex_);
    motion_ = {.from = away(home_), .to = away(home_), .begins = now};
    go(home_, now, walking);
}

void SceneUser::go(const Placement& to, TimeInterval now, TimeInterval lasts, bool returns) {
    Chance chance(seed_ + ++movements_);
    const bool overshoots = chance.between(0, 1) < 0.4;
    motion_ = {.from = placeAt(now),
               .to = to,
               .begins = now,
               .lasts = lasts * chance.between(0.85, 1.2),
               .returns = returns,
               .overshoot = overshoots ? static_cast<float>(chance.between(0.04, 0.10)) : 0};
}

Placement SceneUser::placeAt(TimeInterval now) const {
    if (motion_.lasts <= TimeInterval(0)) return motion_.to;
    auto t = static_cast<float>((now - motion_.begins) / motion_.lasts);
    if (motion_.returns && t > 1) t = std::max(2 - t, 0.0F);
    if (t <= 0) return motion_.from;
    // Past the aim, it swings back within the time of the movement itself.
    const float beyond =
        t < 0.5F || t > 1.7F || motion_.returns
            ? 0
            : motion_.overshoot * std::sin((t - 0.5F) / 1.2F * std::numbers::pi_v<float>);
    const float part = eased(std::min(t, 1.0F)) + beyond;
    return motion_.from * (1 - part) + motion_.to * part;
}

Stance SceneUser::at(TimeInterval now) const {
    static const Movement still{Placement{.position = {.x = 0, .y = 0, .z = 0}}};
    Movement trembling = still;
    trembling.tremble(seed_, 0.6F);
    const MutexLock lock(mutex_);
    Stance stance{.head = placeAt(now) + trembling.at(now)};
    stance.expression.blink = blinkAt(now, seed_);
    stance.expression.gazeYaw = -stance.head.yaw;
    stance.expression.gazePitch = -stance.head.pitch;
    // Beyond the edge of a webcam's picture, shoulders and all.
    const Vector3& place = stance.head.position;
    stance.isThere = std::abs(place.x) < 0.68F * place.z + 0.32F;
    return stance;
}

}  // namespace marrowby
