// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/SecretBytes.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// A failed file operation: the system's error number and its localized text.
struct FileError {
    int code = 0;
    std::string message;
    friend bool operator==(const FileError&, const FileError&) = default;
};

/// The few system calls that sealed files are written with, one method each, so that a test can
/// stop after any of them. Any thread.
class FileSystem {
  public:
    struct File {
        int handle = -1;
    };

    virtual ~FileSystem() = default;

    /// Anything of that name, a link that leads nowhere too; also true when the system will not
    /// say.
    [[nodiscard]] virtual bool exists(const std::filesystem::path& path) const = 0;
    /// The whole file; refuses one of more than `limit` bytes and anything but a regular file.
    [[nodiscard]] virtual std::expected<std::vector<std::uint8_t>, FileError> read(
        const std::filesystem::path& path, std::size_t limit) = 0;

    /// One folder, mode 0700; an existing folder is fine.
    [[nodiscard]] virtual std::expected<void, FileError> makeFolder(
        const std::filesystem::path& path) = 0;
    /// A new file, mode 0600; fails where anything of that name is there already.
    [[nodiscard]] virtual std::expected<File, FileError> createExclusively(
        const std::filesystem::path& path) = 0;
    [[nodiscard]] virtual std::expected<void, FileError> write(
        File file, std::span<const std::uint8_t> bytes) = 0;
    /// To the device, not only to its cache.
    [[nodiscard]] virtual std::expected<void, FileError> flush(File file) = 0;
    virtual void close(File file) = 0;
    [[nodiscard]] virtual std::expected<void, FileError> setPrivateMode(
        const std::filesystem::path& path) = 0;
    /// Replaces `to` in one step.
    [[nodiscard]] virtual std::expected<void, FileError> rename(
        const std::filesystem::path& from, const std::filesystem::path& to) = 0;
    /// The folder's entries to the device.
    [[nodiscard]] virtual std::expected<void, FileError> flushFolder(
        const std::filesystem::path& path) = 0;
    [[nodiscard]] virtual std::expected<void, FileError> remove(
        const std::filesystem::path& path) = 0;
};

}  // namespace marrowby
