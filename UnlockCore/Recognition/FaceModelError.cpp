#include "UnlockCore/Recognition/FaceModelError.h"

namespace marrowby {

namespace {

struct Describe {
    std::string operator()(const FaceModelError::NotFound& error) const {
        return "The face model isn’t in the app (" + error.fileName +
               "). Reinstall Marrowby Unlock.";
    }
    std::string operator()(const FaceModelError::LoadFailed& error) const {
        return "The face model couldn’t be loaded: " + error.reason;
    }
    std::string operator()(const FaceModelError::WrongModel& error) const {
        return "The face model isn’t the one this version expects: " + error.reason;
    }
    std::string operator()(const FaceModelError::UnexpectedInput& error) const {
        return "The face model takes the wrong input: " + error.reason;
    }
    std::string operator()(const FaceModelError::UnexpectedOutput& error) const {
        return "The face model gave something unexpected: " + error.reason;
    }
    std::string operator()(const FaceModelError::PixelBuffer& /*error*/) const {
        return "The face couldn’t be prepared for the model.";
    }
    std::string operator()(const FaceModelError::PredictionFailed& error) const {
        return error.systemText;
    }
};

}  // namespace

std::string description(const FaceModelError& error) {
    return std::visit(Describe{}, error);
}

}  // namespace marrowby
