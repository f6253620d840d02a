// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#import <Foundation/Foundation.h>

namespace marrowby {

/// The fake window server: synthetic keys and session facts.
struct FakeWindowSession {
    bool isTrusted = true;
    bool mayPost = true;
    bool isInputSecure = true;
    /// Nil for an application without an identifier; `nullopt` if none is in front.
    std::optional<NSString*> frontApplication = @"com.apple.loginwindow";
    /// Modifiers held by the user, which every new event inherits.
    std::uint64_t heldFlags = 0;
    bool hasSource = true;
    /// Creating events fails after this many.
    std::size_t eventsLeft = std::numeric_limits<std::size_t>::max();
    /// Code, then flags and text if any: “down 55 flags 1048576”.
    std::vector<std::string> posted{};
    NSDictionary* facts = @{@"kCGSSessionOnConsoleKey" : @YES};
};

/// A singleton; tests assign a new value.
FakeWindowSession& fakeWindowSession();

}  // namespace marrowby
