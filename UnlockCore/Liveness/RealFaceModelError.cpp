#include "UnlockCore/Liveness/RealFaceModelError.h"

namespace marrowby {

namespace {

struct Describe {
    std::string operator()(const RealFaceModelError::NotFound& error) const {
        return "The real-face model isn’t in the app (" + error.resource +
               "). Reinstall Marrowby Unlock.";
    }
    std::string operator()(const RealFaceModelError::LoadFailed& error) const {
        return "The real-face model couldn’t be loaded: " + error.detail;
    }
    std::string operator()(const RealFaceModelError::WrongModel& error) const {
        return "The real-face model isn’t the one this version expects: " + error.detail;
    }
    std::string operator()(const RealFaceModelError::UnexpectedInput& error) const {
        return "The real-face model takes the wrong input: " + error.detail;
    }
    std::string operator()(const RealFaceModelError::UnexpectedOutput& error) const {
        return "The real-face model gave something unexpected: " + error.detail;
    }
    std::string operator()(const RealFaceModelError::PixelBuffer& /*error*/) const {
        return "The face couldn’t be prepared for the real-face model.";
    }
    std::string operator()(const RealFaceModelError::PredictionFailed& error) const {
        return error.systemText;
    }
};

}  // namespace

std::string description(const RealFaceModelError& error) {
    return std::visit(Describe{}, error);
}

}  // namespace marrowby
