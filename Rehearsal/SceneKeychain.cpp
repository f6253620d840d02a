#include "Rehearsal/SceneKeychain.h"

#include <utility>
#include <variant>

namespace marrowby {

namespace {

constexpr KeychainStatus allocationFailed = -108;
constexpr KeychainStatus parameterError = -50;
constexpr KeychainStatus duplicateItem = -25299;

}  // namespace

KeychainMatch SceneKeychain::copyMatching(const KeychainQuery& query) {
    const MutexLock lock(mutex_);
    if (!item_) return {.status = keychainItemNotFound, .data = {}};
    if (!query.contains(KeychainAttribute::returnData)) return {};
    auto copy = SecretBytes::copyOf(std::as_const(*item_).values());
    if (!copy) return {.status = allocationFailed, .data = {}};
    return {.status = keychainSuccess, .data = std::move(*copy)};
}

KeychainStatus SceneKeychain::update(const KeychainQuery& /*query*/,
                                     const KeychainQuery& attributes) {
    const MutexLock lock(mutex_);
    return item_ ? store(attributes) : keychainItemNotFound;
}

KeychainStatus SceneKeychain::add(const KeychainQuery& attributes) {
    const MutexLock lock(mutex_);
    return item_ ? duplicateItem : store(attributes);
}

KeychainStatus SceneKeychain::remove(const KeychainQuery& /*query*/) {
    const MutexLock lock(mutex_);
    if (!item_) return keychainItemNotFound;
    item_.reset();
    return keychainSuccess;
}

std::optional<std::string> SceneKeychain::message(KeychainStatus status) const {
    switch (status) {
        case keychainItemNotFound:
            return "The specified item could not be found in the keychain.";
        case duplicateItem:
            return "The specified item already exists in the keychain.";
        default:
            return std::nullopt;
    }
}

KeychainStatus SceneKeychain::store(const KeychainQuery& attributes) {
    const auto data = attributes.find(KeychainAttribute::valueData);
    if (data == attributes.end()) return parameterError;
    const auto* bytes = std::get_if<std::span<const std::uint8_t>>(&data->second);
    if (bytes == nullptr) return parameterError;
    auto copy = SecretBytes::copyOf(*bytes);
    if (!copy) return allocationFailed;
    item_ = std::move(*copy);
    return keychainSuccess;
}

}  // namespace marrowby
