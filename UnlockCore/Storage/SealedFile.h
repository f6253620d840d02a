// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/FileSystem.h"
#include "UnlockCore/Storage/StorageError.h"
#include "UnlockCore/Storage/Vault.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <span>

namespace marrowby {

/// A file that only the vault opens, and only for its purpose. The file system outlives it.
class SealedFile {
  public:
    SealedFile(FileSystem& fileSystem, std::filesystem::path path, VaultPurpose purpose);

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    /// Also true where the system cannot tell.
    [[nodiscard]] bool exists() const;
    [[nodiscard]] std::expected<SecretBytes, StorageError> read(Vault& vault) const;
    /// Seals, then replaces the file in one step, in folders of mode 0700 that it makes where
    /// missing.
    [[nodiscard]] std::expected<void, StorageError> write(std::span<const std::uint8_t> plaintext,
                                                          Vault& vault) const;
    /// Nothing to do where there is no file.
    [[nodiscard]] std::expected<void, StorageError> remove() const;

  private:
    FileSystem* fileSystem_;
    std::filesystem::path path_;
    VaultPurpose purpose_;
};

}  // namespace marrowby
