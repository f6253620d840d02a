// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <array>
#include <string_view>

namespace marrowby {

/// The head poses of an enrolment, in the order they are taken. Left and right are the user's own.
enum class EnrollmentPose {
    center,
    left,
    topLeft,
    top,
    topRight,
    right,
    bottomRight,
    bottom,
    bottomLeft,
};

inline constexpr std::array allEnrollmentPoses{
    EnrollmentPose::center,      EnrollmentPose::left,     EnrollmentPose::topLeft,
    EnrollmentPose::top,         EnrollmentPose::topRight, EnrollmentPose::right,
    EnrollmentPose::bottomRight, EnrollmentPose::bottom,   EnrollmentPose::bottomLeft,
};

/// The name that a stored sample carries.
[[nodiscard]] std::string_view rawValue(EnrollmentPose pose);
/// What the user is asked to do.
[[nodiscard]] Phrase prompt(EnrollmentPose pose);

}  // namespace marrowby
