#pragma once

#include "UnlockCore/Platform/PlatformWords.h"

#include <string>
#include <variant>

namespace marrowby {

namespace cameraerror {

struct CannotOpen {
    std::string reason;
    friend bool operator==(const CannotOpen&, const CannotOpen&) = default;
};
struct NotAllowed {
    friend bool operator==(const NotAllowed&, const NotAllowed&) = default;
};
struct NoCamera {
    friend bool operator==(const NoCamera&, const NoCamera&) = default;
};

}  // namespace cameraerror

/// Why a camera could not be started.
struct CameraError
    : std::variant<cameraerror::CannotOpen, cameraerror::NotAllowed, cameraerror::NoCamera> {
    using CannotOpen = cameraerror::CannotOpen;
    using NotAllowed = cameraerror::NotAllowed;
    using NoCamera = cameraerror::NoCamera;
    using variant::variant;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const CameraError& error, const PlatformWords& words);

}  // namespace marrowby
