// SPDX-License-Identifier: Apache-2.0

// Declares what the adapter uses of the keychain.
#pragma once
#import <Foundation/Foundation.h>

enum {
    errSecSuccess = 0,
    errSecParam = -50,
    errSecAllocate = -108,
    errSecDuplicateItem = -25299,
    errSecItemNotFound = -25300,
    errSecMissingEntitlement = -34018
};

#ifdef __cplusplus
extern "C" {
#endif
extern const CFStringRef kSecClass, kSecClassGenericPassword, kSecAttrService, kSecAttrAccount,
    kSecAttrLabel, kSecAttrDescription, kSecUseDataProtectionKeychain, kSecReturnAttributes,
    kSecReturnData, kSecMatchLimit, kSecMatchLimitOne, kSecValueData;

OSStatus SecItemCopyMatching(CFDictionaryRef query, CFTypeRef* result);
OSStatus SecItemAdd(CFDictionaryRef attributes, CFTypeRef* result);
OSStatus SecItemUpdate(CFDictionaryRef query, CFDictionaryRef attributes);
OSStatus SecItemDelete(CFDictionaryRef query);
CFStringRef SecCopyErrorMessageString(OSStatus status, void* reserved);
#ifdef __cplusplus
}
#endif
