// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Foundation/SecretBytes.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/AuthenticatedCipher.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/OwnerCheck.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Platform/VaultKeyStore.h"
#include "UnlockCore/Storage/StorageError.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// What a sealed blob is for. Bound into the blob, so that one kind never opens as the other.
enum class VaultPurpose { faces, password };

[[nodiscard]] std::string_view rawValue(VaultPurpose purpose);

/// Holds the one key that protects everything saved, from the owner's confirmation until locked.
/// Any thread where nothing else is said. What it is made of outlives it.
class Vault {
  public:
    using Completion = std::function<void(std::expected<void, StorageError>)>;

    struct Services {
        AuthenticatedCipher& cipher;
        MainThread& mainThread;
        SystemClock& clock;
        /// Called after every change between open and locked, on the thread that made it. May be
        /// empty.
        std::function<void()> didChange;
    };

    /// Starts locked. `hasEncryptedData`: whether any sealed file exists; called on any thread.
    Vault(VaultKeyStore& keyStore, OwnerCheck& ownerCheck, std::function<bool()> hasEncryptedData,
          Services services);
    Vault(const Vault&) = delete;
    Vault& operator=(const Vault&) = delete;
    /// Main thread. Waits for a running operation of the key store; drops an open prompt with its
    /// completions.
    ~Vault();

    [[nodiscard]] bool isUnlocked() const EXCLUDES(mutex_);
    /// When the key was last installed or used; nothing while locked.
    [[nodiscard]] std::optional<Date> lastActivityAt() const EXCLUDES(mutex_);

    /// Main thread. Asks the owner unless unlocked; calls during an open prompt share it and its
    /// reason. The completion comes on the main thread after this has returned.
    void unlock(const std::string& reason, Completion completion) EXCLUDES(mutex_);
    void lock() EXCLUDES(mutex_);
    /// The key was used now; nothing while locked.
    void recordActivity() EXCLUDES(mutex_);

    /// The byte 0x01, a fresh nonce, the ciphertext and the tag.
    [[nodiscard]] std::expected<std::vector<std::uint8_t>, VaultError> seal(
        std::span<const std::uint8_t> plaintext, VaultPurpose purpose) EXCLUDES(mutex_);
    [[nodiscard]] std::expected<SecretBytes, VaultError> open(std::span<const std::uint8_t> blob,
                                                              VaultPurpose purpose)
        EXCLUDES(mutex_);

    [[nodiscard]] VaultKeyStore& keyStore() { return keyStore_; }

  private:
    /// Weak handle that the owner check's reply holds.
    struct Anchor;
    using Key = std::shared_ptr<const SecretBytes>;

    /// What is reported once no lock is held.
    struct Finished {
        std::expected<void, StorageError> result;
        bool hasChanged = false;
        std::vector<Completion> waiting;
    };

    static void ownerReplied(Anchor& anchor, const std::expected<void, StorageError>& reply);
    [[nodiscard]] Finished finishUnlocking(const std::expected<void, StorageError>& reply)
        EXCLUDES(mutex_);
    [[nodiscard]] std::expected<SecretBytes, StorageError> obtainKey();
    [[nodiscard]] std::expected<SecretBytes, StorageError> makeKey();
    [[nodiscard]] Key openKey() const EXCLUDES(mutex_);
    /// Whether the key changed.
    [[nodiscard]] bool install(Key key, Date now) REQUIRES(mutex_);

    VaultKeyStore& keyStore_;
    OwnerCheck& ownerCheck_;
    std::function<bool()> hasEncryptedData_;
    Services services_;
    std::shared_ptr<Anchor> anchor_;

    // Never held across a call to any of the above.
    mutable Mutex mutex_;
    Key key_ GUARDED_BY(mutex_);
    std::optional<Date> lastActivityAt_ GUARDED_BY(mutex_);
    // Completions of the open prompt; nothing without a prompt.
    std::optional<std::vector<Completion>> unlocking_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
