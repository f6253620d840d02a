// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

#import <Foundation/Foundation.h>

namespace marrowby {

/// Empty for invalid UTF-8.
[[nodiscard]] inline NSString* foundationText(std::string_view text) {
    NSString* const converted = [[NSString alloc] initWithBytes:text.data()
                                                         length:text.size()
                                                       encoding:NSUTF8StringEncoding];
    return converted ? converted : @"";
}

/// Empty for nil and for text without a UTF-8 form.
[[nodiscard]] inline std::string plainText(NSString* text) {
    const char* const bytes = text.UTF8String;
    return bytes ? bytes : "";
}

/// Returns `otherwise` if the call throws an Objective-C exception.
template <typename Answer, typename Call>
[[nodiscard]] Answer withoutExceptions(Answer otherwise, const Call& call) {
    @try {
        return call();
    } @catch (NSException* exception) {
        NSLog(@"%@: %@", exception.name, exception.reason);
        return otherwise;
    }
}

}  // namespace marrowby
