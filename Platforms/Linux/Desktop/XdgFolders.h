#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace marrowby {

/// Where an application keeps a user's data and settings (freedesktop.org’s base directories).
struct XdgFolders {
    std::filesystem::path dataHome;
    std::filesystem::path configHome;

    using Environment = std::function<std::optional<std::string>(const char* name)>;

    /// Nothing where neither the environment nor the account names an absolute home.
    [[nodiscard]] static std::optional<XdgFolders> of(
        const Environment& environment, const std::optional<std::filesystem::path>& accountHome);
    /// Of this process.
    [[nodiscard]] static std::optional<XdgFolders> current();
};

}  // namespace marrowby
