// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/FileSystem.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <span>

namespace marrowby::atomicfile {

/// Where the new content is written before the rename.
[[nodiscard]] std::filesystem::path temporaryPath(const std::filesystem::path& path);

/// Replaces or creates a file of mode 0600 in one step, durably; missing folders are made with mode
/// 0700. A crash at any point leaves the old or the new content. After an error no temporary is
/// left, and the old content is in place unless the very last step failed: then it is the new
/// content, perhaps not yet on the device. What is in the file's place is replaced, a symbolic link
/// too. One writer at a time.
[[nodiscard]] std::expected<void, FileError> replace(FileSystem& fileSystem,
                                                     const std::filesystem::path& path,
                                                     std::span<const std::uint8_t> bytes);

}  // namespace marrowby::atomicfile
