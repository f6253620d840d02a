// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/UUID.h"
#include "UnlockCore/Platform/AuthenticatedCipher.h"
#include "UnlockCore/Platform/PlatformWords.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Recognition/FaceIdentity.h"
#include "UnlockCore/Storage/SealedFile.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// The enrolled faces, in memory and sealed on disk. A file that couldn't be read is never written
/// over: until a load succeeds, or removeAll(), every change is refused. Main thread.
class FaceStore {
  public:
    /// The cipher's random numbers make new ids.
    FaceStore(SealedFile file, Vault& vault, AuthenticatedCipher& cipher, SystemClock& clock,
              const PlatformWords& words);

    /// No file is no faces. VaultError::locked changes nothing; any other failure is Unreadable.
    [[nodiscard]] std::expected<void, StorageError> load();

    /// Empty until loaded.
    [[nodiscard]] const std::vector<FaceIdentity>& identities() const { return identities_; }
    [[nodiscard]] std::vector<FaceIdentity> enabledIdentities() const;
    [[nodiscard]] bool isLoaded() const { return isLoaded_; }
    /// Why the last load failed.
    [[nodiscard]] const std::optional<std::string>& loadFailure() const { return loadFailure_; }

    /// Refreshes the identity with the id `replacing`, whose name stays where the new one is blank,
    /// or adds one.
    [[nodiscard]] std::expected<void, StorageError> saveIdentity(
        std::vector<FaceSample> samples, std::string_view name, std::string modelIdentifier,
        std::int64_t dimension, std::optional<UUID> replacing = std::nullopt,
        ModelSums models = {});
    /// Sets the models of the faces that have none recorded.
    [[nodiscard]] std::expected<void, StorageError> adoptModels(const ModelSums& models);
    /// An unknown id changes nothing, here and below.
    [[nodiscard]] std::expected<void, StorageError> setEnabled(bool enabled, UUID id);
    /// A blank name changes nothing.
    [[nodiscard]] std::expected<void, StorageError> rename(UUID id, std::string_view name);
    [[nodiscard]] std::expected<void, StorageError> remove(UUID id);
    /// Deletes the file, whatever its state.
    [[nodiscard]] std::expected<void, StorageError> removeAll();

  private:
    [[nodiscard]] std::expected<std::vector<FaceIdentity>, StorageError> readFile();
    [[nodiscard]] std::expected<void, StorageError> requireLoaded() const;
    [[nodiscard]] std::expected<void, StorageError> commit(std::vector<FaceIdentity> changed);

    SealedFile file_;
    Vault& vault_;
    AuthenticatedCipher& cipher_;
    SystemClock& clock_;
    const PlatformWords& words_;
    std::vector<FaceIdentity> identities_;
    bool isLoaded_ = false;
    std::optional<std::string> loadFailure_;
};

}  // namespace marrowby
