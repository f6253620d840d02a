// SPDX-License-Identifier: Apache-2.0
#include "Tests/MacOnLinux/Security.h"

#include "Tests/MacOnLinux/Counted.h"

#import <Security/Security.h>

namespace marrowby {

FakeLoginKeychain& fakeLoginKeychain() {
    static FakeLoginKeychain keychain;
    return keychain;
}

}  // namespace marrowby

using marrowby::fakeLoginKeychain;

extern "C" {

#define SPELT(name) const CFStringRef name = (__bridge CFStringRef) @ #name
SPELT(kSecClass);
SPELT(kSecClassGenericPassword);
SPELT(kSecAttrService);
SPELT(kSecAttrAccount);
SPELT(kSecAttrLabel);
SPELT(kSecAttrDescription);
SPELT(kSecUseDataProtectionKeychain);
SPELT(kSecReturnAttributes);
SPELT(kSecReturnData);
SPELT(kSecMatchLimit);
SPELT(kSecMatchLimitOne);
SPELT(kSecValueData);
}

namespace {

struct Call {
    /// Returned if not success.
    OSStatus status;
    NSString* name;
    NSDictionary* item;
};

Call call(const char* name, NSDictionary* query) {
    fakeLoginKeychain().calls.emplace_back(name);
    if (const auto refusal = fakeLoginKeychain().refusal) return {*refusal, nil, nil};
    // The data protection keychain needs a signature with a team.
    if (![query[@"kSecUseDataProtectionKeychain"] isEqual:@NO])
        return {errSecMissingEntitlement, nil, nil};
    if (![query[@"kSecClass"] isEqual:@"kSecClassGenericPassword"]) return {errSecParam, nil, nil};
    NSString* const key =
        [NSString stringWithFormat:@"%@ %@", query[@"kSecAttrService"], query[@"kSecAttrAccount"]];
    return {errSecSuccess, key, fakeLoginKeychain().items[key]};
}

/// Stores a copy of the bytes.
void keep(const Call& call, NSDictionary* attributes) {
    NSMutableDictionary* const kept =
        call.item ? [call.item mutableCopy] : [NSMutableDictionary dictionary];
    [kept addEntriesFromDictionary:attributes];
    NSData* const bytes = attributes[@"kSecValueData"];
    kept[@"kSecValueData"] = [NSData dataWithBytes:bytes.bytes length:bytes.length];
    fakeLoginKeychain().items[call.name] = kept;
}

}  // namespace

extern "C" {

OSStatus SecItemCopyMatching(CFDictionaryRef query, CFTypeRef* result) {
    NSDictionary* const wanted = (__bridge NSDictionary*)query;
    const Call found = call("match", wanted);
    if (found.status != errSecSuccess) return found.status;
    if (!found.item) return errSecItemNotFound;
    if (![wanted[@"kSecMatchLimit"] isEqual:@"kSecMatchLimitOne"]) return errSecParam;
    const bool wantsData = [wanted[@"kSecReturnData"] isEqual:@YES];
    const id own = wantsData ? found.item[@"kSecValueData"] : found.item;
    const id foreign = fakeLoginKeychain().foreignResult;
    *result =
        (__bridge_retained CFTypeRef)marrowby::counted([(foreign ? foreign : own) mutableCopy]);
    return errSecSuccess;
}
OSStatus SecItemAdd(CFDictionaryRef attributes, CFTypeRef*) {
    const Call made = call("add", (__bridge NSDictionary*)attributes);
    if (made.status != errSecSuccess) return made.status;
    if (made.item) return errSecDuplicateItem;
    keep(made, (__bridge NSDictionary*)attributes);
    return errSecSuccess;
}
OSStatus SecItemUpdate(CFDictionaryRef query, CFDictionaryRef attributes) {
    const Call found = call("update", (__bridge NSDictionary*)query);
    if (found.status != errSecSuccess) return found.status;
    if (!found.item) return errSecItemNotFound;
    keep(found, (__bridge NSDictionary*)attributes);
    return errSecSuccess;
}
OSStatus SecItemDelete(CFDictionaryRef query) {
    const Call found = call("delete", (__bridge NSDictionary*)query);
    if (found.status != errSecSuccess) return found.status;
    if (!found.item) return errSecItemNotFound;
    [fakeLoginKeychain().items removeObjectForKey:found.name];
    return errSecSuccess;
}
CFStringRef SecCopyErrorMessageString(OSStatus status, void*) {
    if (status == errSecParam) return nullptr;
    return (__bridge_retained CFStringRef)marrowby::counted(
        [[NSMutableString alloc] initWithFormat:@"Keychain error %d", status]);
}
}
