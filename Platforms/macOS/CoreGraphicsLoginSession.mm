// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/CoreGraphicsLoginSession.h"

#include "Platforms/macOS/FoundationText.h"

#import <CoreGraphics/CoreGraphics.h>

namespace marrowby {

namespace {

std::optional<SessionValue> sessionValue(id value) {
    if ([value isKindOfClass:NSString.class]) return plainText(value);
    if (![value isKindOfClass:NSNumber.class]) return std::nullopt;
    const auto number = (__bridge CFNumberRef)value;
    if (CFGetTypeID(number) == CFBooleanGetTypeID()) return [value boolValue] != NO;
    if (CFNumberIsFloatType(number)) return [value doubleValue];
    return std::int64_t{[value longLongValue]};
}

}  // namespace

std::optional<SessionDictionary> CoreGraphicsLoginSession::copyCurrentDictionary() const {
    @autoreleasepool {
        NSDictionary* const copied = CFBridgingRelease(CGSessionCopyCurrentDictionary());
        if (!copied) return std::nullopt;
        SessionDictionary session;
        for (id key in copied) {
            const auto value = sessionValue(copied[key]);
            if (value && [key isKindOfClass:NSString.class])
                session.emplace(plainText(key), *value);
        }
        return session;
    }
}

}  // namespace marrowby
