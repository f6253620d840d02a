// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/CoreGraphicsInputIdle.h"

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>
#import <IOKit/IOKitLib.h>

namespace marrowby {

static_assert(inputidle::hidSystemState == kCGEventSourceStateHIDSystemState);
static_assert(inputidle::anyInputEvent == kCGAnyInputEventType);

TimeInterval CoreGraphicsInputIdle::secondsSinceLastEvent() const {
    return TimeInterval(CGEventSourceSecondsSinceLastEventType(
        static_cast<CGEventSourceStateID>(inputidle::hidSystemState),
        static_cast<CGEventType>(inputidle::anyInputEvent)));
}

std::optional<std::uint64_t> CoreGraphicsInputIdle::registryIdleNanoseconds() const {
    // IOServiceGetMatchingService consumes the dictionary.
    const io_service_t service = IOServiceGetMatchingService(
        kIOMainPortDefault, IOServiceMatching(inputidle::registryService));
    if (service == IO_OBJECT_NULL) return std::nullopt;
    const id property = CFBridgingRelease(IORegistryEntryCreateCFProperty(
        service, (__bridge CFStringRef) @(inputidle::registryProperty), kCFAllocatorDefault, 0));
    IOObjectRelease(service);
    if (![property isKindOfClass:NSNumber.class]) return std::nullopt;
    return [property unsignedLongLongValue];
}

TimeInterval CoreGraphicsInputIdle::systemUptime() const {
    return TimeInterval(NSProcessInfo.processInfo.systemUptime);
}

}  // namespace marrowby
