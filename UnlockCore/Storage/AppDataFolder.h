// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace marrowby {

/// Where the sealed files lie. `base` is the user's folder for application data; a test tag keeps a
/// test build's data apart.
struct AppDataFolder {
    std::filesystem::path path;

    [[nodiscard]] static AppDataFolder in(const std::filesystem::path& base,
                                          std::optional<std::string_view> testTag);

    [[nodiscard]] std::filesystem::path facesFile() const { return path / "Faces.sealed"; }
    [[nodiscard]] std::filesystem::path passwordFile() const { return path / "Password.sealed"; }
};

}  // namespace marrowby
