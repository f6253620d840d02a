// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/VaultKeyStore.h"

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace marrowby {

/// A store of one key that remembers what it was asked. One thread at a time.
class FakeKeyStore final : public VaultKeyStore {
  public:
    using Bytes = std::vector<std::uint8_t>;
    enum class Operation { has, load, save, remove };

    /// Operations that fail, and how.
    std::map<Operation, KeychainError> failing;
    /// hasKey() holds, but loadKey() finds none.
    bool losesKey = false;
    /// Stores something else than it was given.
    bool corruptsKey = false;
    std::optional<Bytes> key;
    std::vector<Operation> calls;

    [[nodiscard]] bool hasKey() override { return !fault(Operation::has) && key; }
    [[nodiscard]] std::expected<std::optional<SecretBytes>, KeychainError> loadKey() override {
        if (const auto failed = fault(Operation::load)) return std::unexpected(*failed);
        if (!key || losesKey) return std::nullopt;
        return SecretBytes::copyOf(*key).value();
    }
    [[nodiscard]] std::expected<void, KeychainError> saveKey(
        std::span<const std::uint8_t> bytes) override {
        if (const auto failed = fault(Operation::save)) return std::unexpected(*failed);
        key.emplace(bytes.begin(), bytes.end());
        if (corruptsKey) key->front() ^= 1;
        return {};
    }
    [[nodiscard]] std::expected<void, KeychainError> deleteKey() override {
        if (const auto failed = fault(Operation::remove)) return std::unexpected(*failed);
        key.reset();
        return {};
    }

  private:
    std::optional<KeychainError> fault(Operation operation) {
        calls.push_back(operation);
        const auto found = failing.find(operation);
        return found == failing.end() ? std::nullopt : std::optional(found->second);
    }
};

}  // namespace marrowby
