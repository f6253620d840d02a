#pragma once

#include "Platforms/Linux/Camera/PixelBuffer.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <string>

namespace marrowby {

/// The picture in a JPEG, PNG or other common file, upright. The error is one sentence that names
/// the file without its folder.
[[nodiscard]] std::expected<std::shared_ptr<const PixelBuffer>, std::string> readPicture(
    const std::filesystem::path& file);

/// Writes a picture in the format that the file's name ends in, such as .png. The error is one
/// sentence that names the file without its folder.
[[nodiscard]] std::expected<void, std::string> writePicture(const std::filesystem::path& file,
                                                            const PixelBuffer& picture);

}  // namespace marrowby
