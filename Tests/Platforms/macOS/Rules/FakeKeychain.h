// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/Keychain.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace marrowby {

/// A keychain of generic passwords that records its calls. One thread at a time.
class FakeKeychain final : public Keychain {
  public:
    using Bytes = std::vector<std::uint8_t>;
    enum class Operation { copyMatching, update, add, remove };

    /// Failing operations and their statuses.
    std::map<Operation, KeychainStatus> failing;
    /// Succeeds without the requested data.
    bool withholdsData = false;

    [[nodiscard]] KeychainMatch copyMatching(const KeychainQuery& query) override {
        if (const auto fault = record(Operation::copyMatching)) {
            return {.status = *fault, .data = {}};
        }
        const auto item = items_.find(name(query));
        const bool wantsData = query.contains(KeychainAttribute::returnData);
        if (item == items_.end()) {
            return {.status = keychainItemNotFound, .data = {}};
        }
        if (!wantsData || withholdsData) return {};
        return {.status = keychainSuccess, .data = SecretBytes::copyOf(item->second).value()};
    }

    [[nodiscard]] KeychainStatus update(const KeychainQuery& query,
                                        const KeychainQuery& attributes) override {
        if (const auto fault = record(Operation::update)) return *fault;
        if (!items_.contains(name(query))) return keychainItemNotFound;
        items_[name(query)] = stored(attributes);
        return keychainSuccess;
    }

    [[nodiscard]] KeychainStatus add(const KeychainQuery& attributes) override {
        constexpr KeychainStatus duplicateItem = -25299;
        if (const auto fault = record(Operation::add)) return *fault;
        if (items_.contains(name(attributes))) return duplicateItem;
        items_[name(attributes)] = stored(attributes);
        return keychainSuccess;
    }

    [[nodiscard]] KeychainStatus remove(const KeychainQuery& query) override {
        if (const auto fault = record(Operation::remove)) return *fault;
        return items_.erase(name(query)) != 0 ? keychainSuccess : keychainItemNotFound;
    }

    [[nodiscard]] std::optional<std::string> message(KeychainStatus status) const override {
        constexpr KeychainStatus interactionNotAllowed = -25308;
        if (status != interactionNotAllowed) return std::nullopt;
        return "User interaction is not allowed.";
    }

    [[nodiscard]] std::vector<Bytes> items() const {
        std::vector<Bytes> all;
        all.reserve(items_.size());
        for (const auto& [name, bytes] : items_)
            all.push_back(bytes);
        return all;
    }
    [[nodiscard]] std::vector<Operation> calls() const { return calls_; }

  private:
    using Name = std::pair<std::string, std::string>;

    static Name name(const KeychainQuery& query) {
        return {std::get<std::string>(query.at(KeychainAttribute::service)),
                std::get<std::string>(query.at(KeychainAttribute::account))};
    }
    [[nodiscard]] static Bytes stored(const KeychainQuery& attributes) {
        const auto data =
            std::get<std::span<const std::uint8_t>>(attributes.at(KeychainAttribute::valueData));
        return {data.begin(), data.end()};
    }
    /// Records the call; returns the test's status for it, if any.
    std::optional<KeychainStatus> record(Operation operation) {
        calls_.push_back(operation);
        const auto found = failing.find(operation);
        return found == failing.end() ? std::nullopt : std::optional(found->second);
    }

    std::map<Name, Bytes> items_;
    std::vector<Operation> calls_;
};

}  // namespace marrowby
