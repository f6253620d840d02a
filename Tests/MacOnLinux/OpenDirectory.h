// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#import <Foundation/Foundation.h>

namespace marrowby {

struct FakeAccounts {
    NSDictionary<NSString*, NSString*>* passwords = @{NSUserName() : @"right"};
    /// Thrown by every call, if set.
    NSException* exception = nil;
    /// Types of opened nodes and of looked-up records.
    std::vector<std::string> calls;
};

/// A singleton; tests assign a new value.
FakeAccounts& fakeAccounts();

}  // namespace marrowby
