// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Enrollment/EnrollmentPose.h"

#include "UnlockCore/Foundation/Fatal.h"

namespace marrowby {

std::string_view rawValue(EnrollmentPose pose) {
    switch (pose) {
        case EnrollmentPose::center:
            return "centre";
        case EnrollmentPose::left:
            return "left";
        case EnrollmentPose::topLeft:
            return "top-left";
        case EnrollmentPose::top:
            return "top";
        case EnrollmentPose::topRight:
            return "top-right";
        case EnrollmentPose::right:
            return "right";
        case EnrollmentPose::bottomRight:
            return "bottom-right";
        case EnrollmentPose::bottom:
            return "bottom";
        case EnrollmentPose::bottomLeft:
            return "bottom-left";
    }
    fatal("not an enrolment pose");
}

Phrase prompt(EnrollmentPose pose) {
    switch (pose) {
        case EnrollmentPose::center:
            return Phrase("Look straight at the camera");
        case EnrollmentPose::left:
            return Phrase("Turn your head a little to the left");
        case EnrollmentPose::topLeft:
            return Phrase("Now up and to the left");
        case EnrollmentPose::top:
            return Phrase("Tilt your head up a little");
        case EnrollmentPose::topRight:
            return Phrase("Now up and to the right");
        case EnrollmentPose::right:
            return Phrase("Turn your head a little to the right");
        case EnrollmentPose::bottomRight:
            return Phrase("Now down and to the right");
        case EnrollmentPose::bottom:
            return Phrase("Tilt your head down a little");
        case EnrollmentPose::bottomLeft:
            return Phrase("Now down and to the left");
    }
    fatal("not an enrolment pose");
}

}  // namespace marrowby
