#pragma once

#include <string>
#include <string_view>

#import <Foundation/Foundation.h>

namespace marrowby {

/// Empty for what is not well-formed UTF-8.
[[nodiscard]] inline NSString* foundationText(std::string_view text) {
    NSString* const converted = [[NSString alloc] initWithBytes:text.data()
                                                         length:text.size()
                                                       encoding:NSUTF8StringEncoding];
    return converted ? converted : @"";
}

/// Empty for nil and for what has no UTF-8 form.
[[nodiscard]] inline std::string plainText(NSString* text) {
    const char* const bytes = text.UTF8String;
    return bytes ? bytes : "";
}

/// Calls what may throw an Objective-C exception, which is no fault of ours to end the process for;
/// then its answer is `otherwise`.
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
