// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#import <Foundation/Foundation.h>

namespace marrowby {

/// A fake login keychain for generic passwords.
struct FakeLoginKeychain {
    /// Status of every call, if set.
    std::optional<std::int32_t> refusal;
    /// Returned in place of the requested bytes.
    id foreignResult = nil;
    /// Names of the calls made.
    std::vector<std::string> calls;
    /// Keyed by service and account.
    NSMutableDictionary<NSString*, NSDictionary*>* items = [[NSMutableDictionary alloc] init];
};

/// A singleton; tests assign a new value.
FakeLoginKeychain& fakeLoginKeychain();

}  // namespace marrowby
