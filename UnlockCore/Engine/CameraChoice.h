// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/WindowServer.h"

#include <optional>
#include <string>

namespace marrowby {

/// The cameras' unique IDs by kind of display; none is the default camera.
struct CameraChoice {
    std::optional<std::string> builtInDisplayCameraID;
    std::optional<std::string> externalDisplayCameraID;

    /// An external display in use is what the user sits in front of, an open lid beside it or not.
    [[nodiscard]] const std::optional<std::string>& cameraID(ActiveDisplays displays) const {
        return displays.hasExternal ? externalDisplayCameraID : builtInDisplayCameraID;
    }
};

}  // namespace marrowby
