// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <expected>
#include <filesystem>
#include <string>

namespace marrowby {

/// Pictures of the program's welcome and settings windows, at one and at two pixels a point, as
/// NAME.png and NAME@2x.png in a folder. Sets the program up on the way, as the first act does.
/// Under a QGuiApplication. The error is a sentence for the user.
[[nodiscard]] std::expected<void, std::string> takeWindowPictures(
    const std::filesystem::path& models, const std::filesystem::path& program,
    const std::filesystem::path& folder);

}  // namespace marrowby
