// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>

namespace marrowby {

/// The folder of models and media that the tests with real data read: MARROWBY_SHARED, else
/// ../shared beside the source tree. Nothing where it is missing; such tests then skip:
///     const auto shared = sharedFolder();
///     if (!shared) GTEST_SKIP() << noSharedFolder;
[[nodiscard]] inline std::optional<std::filesystem::path> sharedFolder() {
    const char* named = std::getenv("MARROWBY_SHARED");
    std::filesystem::path folder =
        named ? std::filesystem::path(named)
              : std::filesystem::path(MARROWBY_SOURCE_DIR).parent_path() / "shared";
    std::error_code error;
    if (!std::filesystem::is_directory(folder / "models", error)) return std::nullopt;
    return folder;
}

inline constexpr const char* noSharedFolder =
    "Skipped: needs the folder of models and media (MARROWBY_SHARED).";

}  // namespace marrowby
