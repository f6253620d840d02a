// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Posix/OpenSslCipher.h"
#include "Tests/Fakes/BytesOf.h"
#include "Tests/Fakes/FakeFileSystem.h"
#include "Tests/Fakes/FakeKeyStore.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeOwnerCheck.h"
#include "UnlockCore/Storage/AppDataFolder.h"
#include "UnlockCore/Storage/SealedFile.h"
#include "UnlockCore/Storage/Vault.h"

#include <functional>
#include <memory>
#include <optional>

namespace marrowby {

/// A vault over fakes with a real cipher, and the files it protects. The owner answers yes at once.
struct VaultFixture {
    FakeMainThread mainThread;
    std::function<void()> onChange;
    FakeKeyStore keyStore;
    FakeOwnerCheck owner;
    FakeFileSystem fileSystem;
    OpenSslCipher cipher;
    AppDataFolder folder = AppDataFolder::in("/disk/data", std::nullopt);
    SealedFile facesFile{fileSystem, folder.facesFile(), VaultPurpose::faces};
    SealedFile passwordFile{fileSystem, folder.passwordFile(), VaultPurpose::password};
    std::unique_ptr<Vault> vault = makeVault();

    VaultFixture() { owner.answer = true; }

    /// Another vault over the same key store, as after a restart.
    [[nodiscard]] std::unique_ptr<Vault> makeVault() {
        return std::make_unique<Vault>(
            keyStore, owner, [this] { return facesFile.exists() || passwordFile.exists(); },
            Vault::Services{cipher, mainThread, mainThread, [this] {
                                if (onChange) onChange();
                            }});
    }

    /// The result of unlock()'s completion; nothing while the owner is being asked.
    std::optional<std::expected<void, StorageError>> unlock() {
        auto result = std::make_shared<std::optional<std::expected<void, StorageError>>>();
        vault->unlock("open it", [result](const auto& outcome) { result->emplace(outcome); });
        mainThread.runPosted();
        return *result;
    }
};

/// The error of an operation.
template <typename Value, typename Error>
[[nodiscard]] std::optional<StorageError> problemOf(const std::expected<Value, Error>& result) {
    return result ? std::nullopt : std::optional<StorageError>(result.error());
}

}  // namespace marrowby
