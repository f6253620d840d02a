// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/SecretBytes.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <variant>

namespace marrowby {

/// Keys of keychain queries, which the adapter maps to kSec… constants.
enum class KeychainAttribute {
    itemClass,
    service,
    account,
    useDataProtectionKeychain,
    returnAttributes,
    returnData,
    matchLimit,
    valueData,
    label,
    itemDescription,
};

/// Attribute values that are system constants.
enum class KeychainConstant { genericPassword, matchLimitOne };

using KeychainValue =
    std::variant<KeychainConstant, bool, std::string, std::span<const std::uint8_t>>;
using KeychainQuery = std::map<KeychainAttribute, KeychainValue>;

/// OSStatus; 0 is success.
using KeychainStatus = std::int32_t;
inline constexpr KeychainStatus keychainSuccess = 0;
inline constexpr KeychainStatus keychainItemNotFound = -25300;

struct KeychainMatch {
    KeychainStatus status = keychainSuccess;
    /// Absent when none was requested, or the result was missing or not bytes.
    std::optional<SecretBytes> data;
};

/// The login keychain. Any thread; may block while the system prompts the user.
class Keychain {
  public:
    virtual ~Keychain() = default;
    [[nodiscard]] virtual KeychainMatch copyMatching(const KeychainQuery& query) = 0;
    [[nodiscard]] virtual KeychainStatus update(const KeychainQuery& query,
                                                const KeychainQuery& attributes) = 0;
    [[nodiscard]] virtual KeychainStatus add(const KeychainQuery& attributes) = 0;
    [[nodiscard]] virtual KeychainStatus remove(const KeychainQuery& query) = 0;
    /// The system's text for a status, if any.
    [[nodiscard]] virtual std::optional<std::string> message(KeychainStatus status) const = 0;
};

}  // namespace marrowby
