#include "UnlockCore/Recognition/CameraError.h"

namespace marrowby {

namespace {

struct Describe {
    const PlatformWords& words;

    std::string operator()(const CameraError::CannotOpen& error) const {
        return "The camera couldn’t be opened: " + error.reason;
    }
    std::string operator()(const CameraError::NotAllowed& /*error*/) const {
        return "Marrowby Unlock isn’t allowed to use the camera. " +
               words.camera.advice("Turn it on in ");
    }
    std::string operator()(const CameraError::NoCamera& /*error*/) const {
        return "No camera found.";
    }
};

}  // namespace

std::string description(const CameraError& error, const PlatformWords& words) {
    return std::visit(Describe{.words = words}, error);
}

}  // namespace marrowby
