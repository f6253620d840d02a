#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Foundation/SecretBytes.h"
#include "UnlockCore/Platform/Keychain.h"

#include <optional>

namespace marrowby {

/// The rehearsal's keychain: one item, in locked memory, gone with the process. Any thread.
class SceneKeychain final : public Keychain {
  public:
    [[nodiscard]] KeychainMatch copyMatching(const KeychainQuery& query) override;
    [[nodiscard]] KeychainStatus update(const KeychainQuery& query,
                                        const KeychainQuery& attributes) override;
    [[nodiscard]] KeychainStatus add(const KeychainQuery& attributes) override;
    [[nodiscard]] KeychainStatus remove(const KeychainQuery& query) override;
    [[nodiscard]] std::optional<std::string> message(KeychainStatus status) const override;

  private:
    [[nodiscard]] KeychainStatus store(const KeychainQuery& attributes) REQUIRES(mutex_);

    Mutex mutex_;
    std::optional<SecretBytes> item_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
