#pragma once

#include "Unlock/Model/ModelPack.h"

#include <expected>
#include <filesystem>
#include <string>

namespace marrowby {

/// The networks of a folder: those that its manifest describes; where it has none, the published
/// ones under their own names. The error is a sentence for the user.
[[nodiscard]] std::expected<ModelPack, std::string> networksIn(const std::filesystem::path& folder);

}  // namespace marrowby
