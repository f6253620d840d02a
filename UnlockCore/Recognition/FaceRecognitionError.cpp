#include "UnlockCore/Recognition/FaceRecognitionError.h"

namespace marrowby {

namespace {

struct Describe {
    std::string operator()(const FaceRecognitionError::NoFace& /*error*/) const {
        return "No face in front of the camera.";
    }
    std::string operator()(const FaceRecognitionError::CannotAlign& /*error*/) const {
        return "The face couldn’t be lined up.";
    }
    std::string operator()(const FaceModelError& error) const { return description(error); }
    std::string operator()(const FaceRecognitionError::DetectionFailed& error) const {
        return error.systemText;
    }
    std::string operator()(const FaceRecognitionError::CutOff& /*error*/) const {
        return "The face reaches over the picture’s edge. Move back a little.";
    }
};

}  // namespace

std::string description(const FaceRecognitionError& error) {
    return std::visit(Describe{}, error);
}

}  // namespace marrowby
