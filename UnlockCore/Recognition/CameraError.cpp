#include "UnlockCore/Recognition/CameraError.h"

namespace marrowby {

namespace {

struct Describe {
    std::string operator()(const CameraError::CannotOpen& error) const {
        return "The camera couldn’t be opened: " + error.reason;
    }
    std::string operator()(const CameraError::NotAllowed& /*error*/) const {
        return "Marrowby Unlock isn’t allowed to use the camera. Turn it on in System Settings › "
               "Privacy & Security › Camera.";
    }
    std::string operator()(const CameraError::NoCamera& /*error*/) const {
        return "No camera found.";
    }
};

}  // namespace

std::string description(const CameraError& error) {
    return std::visit(Describe{}, error);
}

}  // namespace marrowby
