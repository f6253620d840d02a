#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/VaultKeyStore.h"

#include <optional>

namespace marrowby {

/// The rehearsal's key, in locked memory, gone with the process. Any thread.
class SceneKeyStore final : public VaultKeyStore {
  public:
    [[nodiscard]] bool hasKey() override;
    [[nodiscard]] std::expected<std::optional<SecretBytes>, KeychainError> loadKey() override;
    [[nodiscard]] std::expected<void, KeychainError> saveKey(
        std::span<const std::uint8_t> key) override;
    [[nodiscard]] std::expected<void, KeychainError> deleteKey() override;

  private:
    Mutex mutex_;
    std::optional<SecretBytes> key_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
