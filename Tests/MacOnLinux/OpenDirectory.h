#pragma once

#include <string>
#include <vector>

#import <Foundation/Foundation.h>

namespace marrowby {

/// The computer's accounts.
struct FakeAccounts {
    /// By name.
    NSDictionary<NSString*, NSString*>* passwords = @{NSUserName() : @"right"};
    /// Raised by every call.
    NSException* exception = nil;
    /// Nodes opened: their types; records: their kinds.
    std::vector<std::string> calls;
};

/// One for all; a test assigns a new one.
FakeAccounts& fakeAccounts();

}  // namespace marrowby
