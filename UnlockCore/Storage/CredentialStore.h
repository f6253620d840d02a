// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Storage/SealedFile.h"

#include <concepts>
#include <cstdint>
#include <expected>
#include <functional>
#include <span>
#include <type_traits>
#include <utility>

namespace marrowby {

/// Keeps the login password, sealed. It has no state but the file: saving and removing belong to
/// the main thread, reading is fine on any.
class CredentialStore {
  public:
    CredentialStore(SealedFile file, Vault& vault) : file_(std::move(file)), vault_(vault) {}

    /// Whether the file exists.
    [[nodiscard]] bool hasPassword() const { return file_.exists(); }

    /// Whether its vault is unlocked. Any thread.
    [[nodiscard]] bool isOpen() const { return vault_.isUnlocked(); }

    /// Overwrites the caller's password with zeros, saved or not.
    [[nodiscard]] std::expected<void, StorageError> save(SecretBytes& password);

    /// Calls `body` with the password's UTF-8, which is overwritten as soon as it returns, and
    /// gives what `body` gives. Counts as use of the vault.
    template <std::invocable<std::span<const std::uint8_t>> Body>
    [[nodiscard]] auto withPassword(Body&& body) const
        -> std::expected<std::invoke_result_t<Body, std::span<const std::uint8_t>>, StorageError> {
        using Result = std::invoke_result_t<Body, std::span<const std::uint8_t>>;
        const std::expected<SecretBytes, StorageError> password = openPassword();
        if (!password) return std::unexpected(password.error());
        if constexpr (std::is_void_v<Result>) {
            std::invoke(std::forward<Body>(body), password->values());
            return {};
        } else {
            return std::expected<Result, StorageError>(
                std::in_place, std::invoke(std::forward<Body>(body), password->values()));
        }
    }

    [[nodiscard]] std::expected<void, StorageError> remove() { return file_.remove(); }

  private:
    [[nodiscard]] std::expected<SecretBytes, StorageError> openPassword() const;

    SealedFile file_;
    Vault& vault_;
};

}  // namespace marrowby
