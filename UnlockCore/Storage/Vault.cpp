// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Storage/Vault.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <string_view>
#include <utility>
#include <variant>

namespace marrowby {

std::string_view rawValue(VaultPurpose purpose) {
    switch (purpose) {
        case VaultPurpose::faces:
            return "faces";
        case VaultPurpose::password:
            return "password";
    }
    return {};
}

namespace {

constexpr std::uint8_t formatVersion = 0x01;
constexpr std::size_t headerSize = 1 + AuthenticatedCipher::nonceSize;

std::string authenticatedText(VaultPurpose purpose) {
    return "app.quenby.unlock/" + std::string(rawValue(purpose)) + "/1";
}

std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::expected<void, StorageError> storageResult(const OwnerCheck::Result& reply) {
    if (reply) return {};
    return std::unexpected(
        std::visit([](const auto& error) { return StorageError(error); }, reply.error()));
}

AuthenticatedCipher::Key cipherKey(const SecretBytes& key) {
    return key.values().first<AuthenticatedCipher::keySize>();
}

}  // namespace

struct Vault::Anchor {
    Mutex mutex;
    Vault* vault GUARDED_BY(mutex) = nullptr;
};

Vault::Vault(VaultKeyStore& keyStore, OwnerCheck& ownerCheck,
             std::function<bool()> hasEncryptedData, Services services)
    : keyStore_(keyStore),
      ownerCheck_(ownerCheck),
      hasEncryptedData_(std::move(hasEncryptedData)),
      services_(std::move(services)),
      anchor_(std::make_shared<Anchor>()) {
    const MutexLock lock(anchor_->mutex);
    anchor_->vault = this;
}

Vault::~Vault() {
    const MutexLock lock(anchor_->mutex);
    anchor_->vault = nullptr;
}

bool Vault::isUnlocked() const {
    const MutexLock lock(mutex_);
    return key_ != nullptr;
}

std::optional<Date> Vault::lastActivityAt() const {
    const MutexLock lock(mutex_);
    return lastActivityAt_;
}

void Vault::unlock(const std::string& reason, Completion completion) {
    Completion atOnce;
    bool isFirst = false;
    {
        const MutexLock lock(mutex_);
        if (key_) {
            atOnce = std::move(completion);
        } else {
            isFirst = !unlocking_;
            if (isFirst) unlocking_.emplace();
            unlocking_->push_back(std::move(completion));
        }
    }
    if (atOnce) services_.mainThread.post([atOnce = std::move(atOnce)] { atOnce({}); });
    if (!isFirst) return;
    ownerCheck_.confirmOwner(reason,
                             [anchor = anchor_, hasReplied = std::make_shared<std::atomic_flag>()](
                                 const OwnerCheck::Result& reply) {
                                 if (!hasReplied->test_and_set())
                                     ownerReplied(*anchor, storageResult(reply));
                             });
}

void Vault::ownerReplied(Anchor& anchor, const std::expected<void, StorageError>& reply) {
    std::optional<Services> services;
    Finished finished;
    {
        const MutexLock lock(anchor.mutex);
        if (anchor.vault == nullptr) return;
        services.emplace(anchor.vault->services_);
        finished = anchor.vault->finishUnlocking(reply);
    }
    // The vault may be destroyed from here on.
    if (finished.hasChanged && services->didChange) services->didChange();
    services->mainThread.post(
        [result = std::move(finished.result), waiting = std::move(finished.waiting)] {
            for (const Completion& completion : waiting)
                completion(result);
        });
}

Vault::Finished Vault::finishUnlocking(const std::expected<void, StorageError>& reply) {
    Finished finished{.result = reply, .hasChanged = false, .waiting = {}};
    Key key;
    if (reply) {
        auto obtained = obtainKey();
        if (obtained) {
            key = std::make_shared<const SecretBytes>(std::move(*obtained));
        } else {
            finished.result = std::unexpected(std::move(obtained.error()));
        }
    }
    const Date now = services_.clock.now();
    const MutexLock lock(mutex_);
    if (key) finished.hasChanged = install(std::move(key), now);
    finished.waiting = std::exchange(unlocking_, std::nullopt).value_or(std::vector<Completion>());
    return finished;
}

std::expected<SecretBytes, StorageError> Vault::obtainKey() {
    if (!keyStore_.hasKey()) return makeKey();
    auto loaded = keyStore_.loadKey();
    if (!loaded) return std::unexpected(std::move(loaded.error()));
    std::optional<SecretBytes>& key = *loaded;
    if (!key) return std::unexpected(VaultError::keyMissingButDataExists);
    if (key->size() != AuthenticatedCipher::keySize) return std::unexpected(VaultError::badKey);
    return std::move(*key);
}

std::expected<SecretBytes, StorageError> Vault::makeKey() {
    // A fresh key would orphan what was sealed under the lost one.
    if (hasEncryptedData_()) return std::unexpected(VaultError::keyMissingButDataExists);

    auto key = SecretBytes::create(AuthenticatedCipher::keySize);
    if (!key) return std::unexpected(key.error());
    if (!services_.cipher.random(key->values())) return std::unexpected(VaultError::sealFailed);
    if (auto saved = keyStore_.saveKey(key->values()); !saved) {
        return std::unexpected(std::move(saved.error()));
    }
    auto readBack = keyStore_.loadKey();
    if (!readBack) return std::unexpected(std::move(readBack.error()));
    const std::optional<SecretBytes>& stored = *readBack;
    if (!stored || !std::ranges::equal(stored->values(), key->values())) {
        return std::unexpected(VaultError::badKey);
    }
    return std::move(*key);
}

void Vault::lock() {
    const Date now = services_.clock.now();
    bool hasChanged = false;
    {
        const MutexLock lock(mutex_);
        hasChanged = install(nullptr, now);
    }
    if (hasChanged && services_.didChange) services_.didChange();
}

bool Vault::install(Key key, Date now) {
    const bool isSame =
        key && key_ ? std::ranges::equal(key->values(), key_->values()) : key == key_;
    key_ = std::move(key);
    lastActivityAt_ = key_ ? std::optional(now) : std::nullopt;
    return !isSame;
}

void Vault::recordActivity() {
    const Date now = services_.clock.now();
    const MutexLock lock(mutex_);
    if (key_) lastActivityAt_ = now;
}

Vault::Key Vault::openKey() const {
    const MutexLock lock(mutex_);
    return key_;
}

std::expected<std::vector<std::uint8_t>, VaultError> Vault::seal(
    std::span<const std::uint8_t> plaintext, VaultPurpose purpose) {
    const Key key = openKey();
    if (!key) return std::unexpected(VaultError::locked);

    std::array<std::uint8_t, AuthenticatedCipher::nonceSize> nonce{};
    if (!services_.cipher.random(nonce)) return std::unexpected(VaultError::sealFailed);
    const std::string text = authenticatedText(purpose);
    const auto sealed = services_.cipher.seal(cipherKey(*key), nonce, bytesOf(text), plaintext);
    if (!sealed) return std::unexpected(VaultError::sealFailed);

    std::vector<std::uint8_t> blob;
    blob.reserve(headerSize + sealed->size());
    blob.push_back(formatVersion);
    blob.insert(blob.end(), nonce.begin(), nonce.end());
    blob.insert(blob.end(), sealed->begin(), sealed->end());
    return blob;
}

std::expected<SecretBytes, VaultError> Vault::open(std::span<const std::uint8_t> blob,
                                                   VaultPurpose purpose) {
    const Key key = openKey();
    if (!key) return std::unexpected(VaultError::locked);
    if (blob.empty()) return std::unexpected(VaultError::openFailed);
    if (blob.front() != formatVersion) return std::unexpected(VaultError::unknownFormat);
    if (blob.size() < headerSize + AuthenticatedCipher::tagSize) {
        return std::unexpected(VaultError::openFailed);
    }
    const std::string text = authenticatedText(purpose);
    auto plaintext =
        services_.cipher.open(cipherKey(*key), blob.subspan<1, AuthenticatedCipher::nonceSize>(),
                              bytesOf(text), blob.subspan(headerSize));
    if (!plaintext) return std::unexpected(VaultError::openFailed);
    return std::move(*plaintext);
}

}  // namespace marrowby
