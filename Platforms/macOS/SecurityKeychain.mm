// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/SecurityKeychain.h"

#include "Platforms/macOS/FoundationText.h"

#import <Security/Security.h>

namespace marrowby {

static_assert(keychainSuccess == errSecSuccess);
static_assert(keychainItemNotFound == errSecItemNotFound);

namespace {

CFStringRef spelt(KeychainAttribute attribute) {
    switch (attribute) {
        case KeychainAttribute::itemClass:
            return kSecClass;
        case KeychainAttribute::service:
            return kSecAttrService;
        case KeychainAttribute::account:
            return kSecAttrAccount;
        case KeychainAttribute::useDataProtectionKeychain:
            return kSecUseDataProtectionKeychain;
        case KeychainAttribute::returnAttributes:
            return kSecReturnAttributes;
        case KeychainAttribute::returnData:
            return kSecReturnData;
        case KeychainAttribute::matchLimit:
            return kSecMatchLimit;
        case KeychainAttribute::valueData:
            return kSecValueData;
        case KeychainAttribute::label:
            return kSecAttrLabel;
        case KeychainAttribute::itemDescription:
            return kSecAttrDescription;
    }
}

struct Spell {
    id operator()(KeychainConstant constant) const {
        switch (constant) {
            case KeychainConstant::genericPassword:
                return (__bridge id)kSecClassGenericPassword;
            case KeychainConstant::matchLimitOne:
                return (__bridge id)kSecMatchLimitOne;
        }
    }
    id operator()(bool flag) const { return @(flag); }
    id operator()(const std::string& text) const { return foundationText(text); }
    // Not a copy: the caller's bytes outlive the query.
    id operator()(std::span<const std::uint8_t> bytes) const {
        return [NSData dataWithBytesNoCopy:const_cast<std::uint8_t*>(bytes.data())
                                    length:bytes.size()
                              freeWhenDone:NO];
    }
};

/// Valid as long as the query.
NSDictionary* dictionary(const KeychainQuery& query) {
    NSMutableDictionary* const spelled = [NSMutableDictionary dictionary];
    for (const auto& [attribute, value] : query)
        spelled[(__bridge NSString*)spelt(attribute)] = std::visit(Spell(), value);
    return spelled;
}

}  // namespace

KeychainMatch SecurityKeychain::copyMatching(const KeychainQuery& query) {
    @autoreleasepool {
        CFTypeRef result = nullptr;
        const OSStatus status =
            SecItemCopyMatching((__bridge CFDictionaryRef)dictionary(query), &result);
        const id found = CFBridgingRelease(result);
        KeychainMatch match{.status = status, .data = std::nullopt};
        if (status != errSecSuccess || ![found isKindOfClass:NSData.class]) return match;
        NSData* const data = found;
        auto copy = SecretBytes::copyOf(
            {static_cast<const std::uint8_t*>(data.bytes), static_cast<std::size_t>(data.length)});
        if (!copy) return {.status = errSecAllocate, .data = std::nullopt};
        match.data = std::move(*copy);
        return match;
    }
}

KeychainStatus SecurityKeychain::update(const KeychainQuery& query,
                                        const KeychainQuery& attributes) {
    @autoreleasepool {
        return SecItemUpdate((__bridge CFDictionaryRef)dictionary(query),
                             (__bridge CFDictionaryRef)dictionary(attributes));
    }
}

KeychainStatus SecurityKeychain::add(const KeychainQuery& attributes) {
    @autoreleasepool {
        return SecItemAdd((__bridge CFDictionaryRef)dictionary(attributes), nullptr);
    }
}

KeychainStatus SecurityKeychain::remove(const KeychainQuery& query) {
    @autoreleasepool {
        return SecItemDelete((__bridge CFDictionaryRef)dictionary(query));
    }
}

std::optional<std::string> SecurityKeychain::message(KeychainStatus status) const {
    NSString* const text = CFBridgingRelease(SecCopyErrorMessageString(status, nullptr));
    if (!text) return std::nullopt;
    return plainText(text);
}

}  // namespace marrowby
