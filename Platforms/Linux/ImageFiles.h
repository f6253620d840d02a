#pragma once

#include "Platforms/Linux/PixelBuffer.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <string>

namespace marrowby {

/// The picture in a JPEG, PNG or other common file, upright. The error is one sentence that names
/// the file without its folder.
[[nodiscard]] std::expected<std::shared_ptr<const PixelBuffer>, std::string> readPicture(
    const std::filesystem::path& file);

}  // namespace marrowby
