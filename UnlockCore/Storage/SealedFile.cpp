// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Storage/SealedFile.h"

#include "UnlockCore/Platform/AtomicFile.h"

#include <system_error>
#include <utility>

namespace marrowby {

namespace {

// Opened content is held in locked memory, of which an ordinary user has 8 MiB.
constexpr std::size_t largestFacesFile = std::size_t{4} << 20;
constexpr std::size_t largestPasswordFile = std::size_t{64} << 10;

std::size_t largestFile(VaultPurpose purpose) {
    switch (purpose) {
        case VaultPurpose::faces:
            return largestFacesFile;
        case VaultPurpose::password:
            return largestPasswordFile;
    }
    return 0;
}

FileError tooLarge() {
    const std::error_code code = std::make_error_code(std::errc::file_too_large);
    return {.code = code.value(), .message = code.message()};
}

}  // namespace

SealedFile::SealedFile(FileSystem& fileSystem, std::filesystem::path path, VaultPurpose purpose)
    : fileSystem_(&fileSystem), path_(std::move(path)), purpose_(purpose) {}

bool SealedFile::exists() const {
    return fileSystem_->exists(path_);
}

std::expected<SecretBytes, StorageError> SealedFile::read(Vault& vault) const {
    const auto blob = fileSystem_->read(path_, largestFile(purpose_));
    if (!blob) return std::unexpected(blob.error());
    auto plaintext = vault.open(*blob, purpose_);
    if (!plaintext) return std::unexpected(plaintext.error());
    return std::move(*plaintext);
}

std::expected<void, StorageError> SealedFile::write(std::span<const std::uint8_t> plaintext,
                                                    Vault& vault) const {
    const auto blob = vault.seal(plaintext, purpose_);
    if (!blob) return std::unexpected(blob.error());
    // Never writes what read() would refuse.
    if (blob->size() > largestFile(purpose_)) return std::unexpected(tooLarge());
    if (auto written = atomicfile::replace(*fileSystem_, path_, *blob); !written) {
        return std::unexpected(std::move(written.error()));
    }
    return {};
}

std::expected<void, StorageError> SealedFile::remove() const {
    if (!exists()) return {};
    if (auto removed = fileSystem_->remove(path_); !removed) {
        return std::unexpected(std::move(removed.error()));
    }
    // Best effort: the file is gone already.
    // NOLINTNEXTLINE(bugprone-unused-return-value)
    (void)fileSystem_->flushFolder(path_.parent_path());
    return {};
}

}  // namespace marrowby
