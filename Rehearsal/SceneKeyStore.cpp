#include "Rehearsal/SceneKeyStore.h"

#include <string>
#include <utility>

namespace marrowby {

namespace {

std::expected<SecretBytes, KeychainError> copyOf(std::span<const std::uint8_t> bytes) {
    auto copy = SecretBytes::copyOf(bytes);
    if (copy) return *std::move(copy);
    return std::unexpected<KeychainError>(
        KeychainError::Status{.code = 0, .message = std::string(description(copy.error()))});
}

}  // namespace

bool SceneKeyStore::hasKey() {
    const MutexLock lock(mutex_);
    return key_.has_value();
}

std::expected<std::optional<SecretBytes>, KeychainError> SceneKeyStore::loadKey() {
    const MutexLock lock(mutex_);
    if (!key_) return std::nullopt;
    return copyOf(std::as_const(*key_).values());
}

std::expected<void, KeychainError> SceneKeyStore::saveKey(std::span<const std::uint8_t> key) {
    auto copy = copyOf(key);
    if (!copy) return std::unexpected(std::move(copy.error()));
    const MutexLock lock(mutex_);
    key_ = *std::move(copy);
    return {};
}

std::expected<void, KeychainError> SceneKeyStore::deleteKey() {
    const MutexLock lock(mutex_);
    key_.reset();
    return {};
}

}  // namespace marrowby
