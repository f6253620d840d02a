#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/Keychain.h"

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace marrowby {

/// A keychain of generic passwords that remembers what it was asked. Any thread; the knobs before
/// use.
class FakeKeychain final : public Keychain {
  public:
    using Bytes = std::vector<std::uint8_t>;
    enum class Operation { copyMatching, update, add, remove };
    struct Call {
        Operation operation = Operation::copyMatching;
        KeychainQuery query;
        /// What update() was to set.
        KeychainQuery attributes;
    };

    /// Operations that fail, and how.
    std::map<Operation, KeychainStatus> failing;
    /// Succeeds without the data that was asked for.
    bool withholdsData = false;
    /// Says that the item is there, then that it isn't.
    bool losesData = false;
    /// Keeps something else than it was given.
    bool corruptsData = false;

    [[nodiscard]] KeychainMatch copyMatching(const KeychainQuery& query) override {
        const MutexLock lock(mutex_);
        record({.operation = Operation::copyMatching, .query = query, .attributes = {}});
        if (const auto found = failing.find(Operation::copyMatching); found != failing.end()) {
            return {.status = found->second, .data = {}};
        }
        const auto item = items_.find(name(query));
        const bool wantsData = query.contains(KeychainAttribute::returnData);
        if (item == items_.end() || (wantsData && losesData)) {
            return {.status = keychainItemNotFound, .data = {}};
        }
        if (!wantsData || withholdsData) return {};
        return {.status = keychainSuccess, .data = SecretBytes::copyOf(item->second).value()};
    }

    [[nodiscard]] KeychainStatus update(const KeychainQuery& query,
                                        const KeychainQuery& attributes) override {
        const MutexLock lock(mutex_);
        record({.operation = Operation::update, .query = query, .attributes = attributes});
        if (const auto found = failing.find(Operation::update); found != failing.end()) {
            return found->second;
        }
        if (!items_.contains(name(query))) return keychainItemNotFound;
        items_[name(query)] = stored(attributes);
        return keychainSuccess;
    }

    [[nodiscard]] KeychainStatus add(const KeychainQuery& attributes) override {
        constexpr KeychainStatus duplicateItem = -25299;
        const MutexLock lock(mutex_);
        record({.operation = Operation::add, .query = attributes, .attributes = {}});
        if (const auto found = failing.find(Operation::add); found != failing.end()) {
            return found->second;
        }
        if (items_.contains(name(attributes))) return duplicateItem;
        items_[name(attributes)] = stored(attributes);
        return keychainSuccess;
    }

    [[nodiscard]] KeychainStatus remove(const KeychainQuery& query) override {
        const MutexLock lock(mutex_);
        record({.operation = Operation::remove, .query = query, .attributes = {}});
        if (const auto found = failing.find(Operation::remove); found != failing.end()) {
            return found->second;
        }
        return items_.erase(name(query)) != 0 ? keychainSuccess : keychainItemNotFound;
    }

    [[nodiscard]] std::optional<std::string> message(KeychainStatus status) const override {
        constexpr KeychainStatus interactionNotAllowed = -25308;
        if (status != interactionNotAllowed) return std::nullopt;
        return "User interaction is not allowed.";
    }

    void put(std::string service, std::string account, Bytes bytes) {
        const MutexLock lock(mutex_);
        items_[{std::move(service), std::move(account)}] = std::move(bytes);
    }
    [[nodiscard]] std::vector<Bytes> items() const {
        const MutexLock lock(mutex_);
        std::vector<Bytes> all;
        all.reserve(items_.size());
        for (const auto& [name, bytes] : items_)
            all.push_back(bytes);
        return all;
    }
    /// Their data stays valid as long as the keychain.
    [[nodiscard]] std::vector<Call> calls() const {
        const MutexLock lock(mutex_);
        return calls_;
    }

  private:
    using Name = std::pair<std::string, std::string>;

    static Name name(const KeychainQuery& query) {
        return {std::get<std::string>(query.at(KeychainAttribute::service)),
                std::get<std::string>(query.at(KeychainAttribute::account))};
    }
    [[nodiscard]] Bytes stored(const KeychainQuery& attributes) const {
        const auto data =
            std::get<std::span<const std::uint8_t>>(attributes.at(KeychainAttribute::valueData));
        Bytes bytes(data.begin(), data.end());
        if (corruptsData) bytes.front() ^= 1;
        return bytes;
    }
    void record(Call call) REQUIRES(mutex_) {
        for (KeychainQuery* query : {&call.query, &call.attributes}) {
            const auto data = query->find(KeychainAttribute::valueData);
            if (data == query->end()) continue;
            const auto span = std::get<std::span<const std::uint8_t>>(data->second);
            data->second =
                std::span<const std::uint8_t>(recordedData_.emplace_back(span.begin(), span.end()));
        }
        calls_.push_back(std::move(call));
    }

    mutable Mutex mutex_;
    std::map<Name, Bytes> items_ GUARDED_BY(mutex_);
    std::vector<Call> calls_ GUARDED_BY(mutex_);
    std::deque<Bytes> recordedData_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
