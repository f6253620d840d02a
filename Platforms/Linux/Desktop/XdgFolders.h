// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace marrowby {

/// The user's data and configuration folders (freedesktop.org XDG Base Directory).
struct XdgFolders {
    std::filesystem::path dataHome;
    std::filesystem::path configHome;

    using Environment = std::function<std::optional<std::string>(const char* name)>;

    /// `nullopt` when neither the environment nor the account gives an absolute home.
    [[nodiscard]] static std::optional<XdgFolders> of(
        const Environment& environment, const std::optional<std::filesystem::path>& accountHome);
    [[nodiscard]] static std::optional<XdgFolders> current();
};

}  // namespace marrowby
