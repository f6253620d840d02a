// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Model/ModelPack.h"

#include <expected>
#include <filesystem>
#include <string>

namespace marrowby {

/// The models of a folder: those that its manifest describes, or without one the published models
/// under their own names. The error is a sentence for the user.
[[nodiscard]] std::expected<ModelPack, std::string> modelsIn(const std::filesystem::path& folder);

}  // namespace marrowby
