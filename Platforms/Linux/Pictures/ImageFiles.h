// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Camera/PixelBuffer.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <string>

namespace marrowby {

/// Reads a JPEG, PNG or other common file, rotated upright. The error is a sentence with the file's
/// name, without its folder.
[[nodiscard]] std::expected<std::shared_ptr<const PixelBuffer>, std::string> readPicture(
    const std::filesystem::path& file);

/// Writes in the format of the file's extension, such as .png. The error is as above.
[[nodiscard]] std::expected<void, std::string> writePicture(const std::filesystem::path& file,
                                                            const PixelBuffer& picture);

}  // namespace marrowby
