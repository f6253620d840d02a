// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/FileSystem.h"

namespace marrowby {

/// POSIX files. Never follows a symbolic link as the last path component.
class PosixFileSystem final : public FileSystem {
  public:
    [[nodiscard]] bool exists(const std::filesystem::path& path) const override;
    [[nodiscard]] std::expected<std::vector<std::uint8_t>, FileError> read(
        const std::filesystem::path& path, std::size_t limit) override;
    [[nodiscard]] std::expected<void, FileError> makeFolder(
        const std::filesystem::path& path) override;
    [[nodiscard]] std::expected<File, FileError> createExclusively(
        const std::filesystem::path& path) override;
    [[nodiscard]] std::expected<void, FileError> write(
        File file, std::span<const std::uint8_t> bytes) override;
    [[nodiscard]] std::expected<void, FileError> flush(File file) override;
    void close(File file) override;
    [[nodiscard]] std::expected<void, FileError> setPrivateMode(
        const std::filesystem::path& path) override;
    [[nodiscard]] std::expected<void, FileError> rename(const std::filesystem::path& from,
                                                        const std::filesystem::path& to) override;
    [[nodiscard]] std::expected<void, FileError> flushFolder(
        const std::filesystem::path& path) override;
    [[nodiscard]] std::expected<void, FileError> remove(const std::filesystem::path& path) override;
};

}  // namespace marrowby
