#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#import <Foundation/Foundation.h>

namespace marrowby {

/// The window server as synthetic keys and the session's facts meet it.
struct FakeWindowSession {
    bool isTrusted = true;
    bool mayPost = true;
    bool isInputSecure = true;
    /// Nil for an application without an identifier; nothing where none is in front.
    std::optional<NSString*> frontApplication = @"com.apple.loginwindow";
    /// Modifiers that somebody holds: every event is made with them.
    std::uint64_t heldFlags = 0;
    bool hasSource = true;
    /// How many more events can be made.
    std::size_t eventsLeft = std::numeric_limits<std::size_t>::max();
    /// Code, then flags and text where there are any: “down 55 flags 1048576”.
    std::vector<std::string> posted{};
    /// Nil where there is no session.
    NSDictionary* facts = @{@"kCGSSessionOnConsoleKey" : @YES};
};

/// One for all; a test assigns a new one.
FakeWindowSession& fakeWindowSession();

}  // namespace marrowby
