#pragma once

#include <string>

namespace marrowby {

/// A camera the user can choose.
struct CameraDevice {
    /// The system-wide unique ID.
    std::string id;
    /// In the user's language.
    std::string name;

    friend bool operator==(const CameraDevice&, const CameraDevice&) = default;
};

}  // namespace marrowby
