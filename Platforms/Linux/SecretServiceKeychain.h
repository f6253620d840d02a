#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/Keychain.h"

#include <string>
#include <vector>

namespace marrowby {

/// The login keychain as items of the Secret Service (freedesktop.org) on the session bus: an
/// item's attributes are its service and account. Each call is a conversation of its own, so that a
/// bus or a service that comes back is found again. It never asks the user: a locked keyring is a
/// status.
class SecretServiceKeychain final : public Keychain {
  public:
    /// An empty address is no bus.
    explicit SecretServiceKeychain(std::string busAddress) : address_(std::move(busAddress)) {}

    /// Also a query for the attributes alone succeeds where the keyring can't be looked into: the
    /// item isn't known to be missing, and reading it says why.
    [[nodiscard]] KeychainMatch copyMatching(const KeychainQuery& query) override;
    [[nodiscard]] KeychainStatus update(const KeychainQuery& query,
                                        const KeychainQuery& attributes) override;
    /// Into the default keyring.
    [[nodiscard]] KeychainStatus add(const KeychainQuery& attributes) override;
    [[nodiscard]] KeychainStatus remove(const KeychainQuery& query) override;
    [[nodiscard]] std::optional<std::string> message(KeychainStatus status) const override;

    // The system's own codes are negative; above these lie those of texts that came from elsewhere.
    static constexpr KeychainStatus noBus = 1;
    static constexpr KeychainStatus noService = 2;
    static constexpr KeychainStatus noKeyring = 3;
    static constexpr KeychainStatus locked = 4;
    static constexpr KeychainStatus wouldAsk = 5;

  private:
    struct Failure;
    class Conversation;

    [[nodiscard]] KeychainStatus statusOf(const Failure& failure) EXCLUDES(mutex_);

    const std::string address_;
    mutable Mutex mutex_;
    /// What failed otherwise, in the words of the library or the service.
    std::vector<std::string> otherTexts_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
