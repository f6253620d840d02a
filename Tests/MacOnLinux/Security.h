#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#import <Foundation/Foundation.h>

namespace marrowby {

/// The login keychain. It takes generic passwords only.
struct FakeLoginKeychain {
    /// What it answers to everything.
    std::optional<std::int32_t> refusal;
    /// What it gives in place of the bytes that were asked for.
    id foreignResult = nil;
    /// Calls that came, by their names.
    std::vector<std::string> calls;
    /// By service and account.
    NSMutableDictionary<NSString*, NSDictionary*>* items = [[NSMutableDictionary alloc] init];
};

/// One for all; a test assigns a new one.
FakeLoginKeychain& fakeLoginKeychain();

}  // namespace marrowby
