// SPDX-License-Identifier: Apache-2.0
#include "Tests/MacOnLinux/HidManager.h"

#include "Tests/MacOnLinux/Counted.h"

#include <algorithm>
#include <functional>

#import <IOKit/hid/IOHIDLib.h>
#import <IOKit/hidsystem/IOHIDLib.h>

@interface MacHidValue : NSObject
@property(nonatomic) uint32_t usage;
@property(nonatomic) CFIndex value;
@property(nonatomic) CFIndex length;
@end
@implementation MacHidValue
@end

@class MacHidManager;
static std::vector<void*> managers;

@interface MacHidManager : NSObject
@property(nonatomic) IOHIDValueCallback callback;
@property(nonatomic) void* context;
@property(nonatomic) bool isScheduled;
@property(nonatomic) bool isOpen;
@end
@implementation MacHidManager
- (instancetype)init {
    self = [super init];
    managers.push_back((__bridge void*)self);
    return self;
}
- (void)dealloc {
    std::erase(managers, (__bridge void*)self);
    if (self.callback || self.isScheduled || self.isOpen) ++marrowby::fakeKeyboards().leftInUse;
}
@end

static MacHidManager* of(void* manager) {
    return (__bridge MacHidManager*)manager;
}

namespace marrowby {

FakeKeyboards& fakeKeyboards() {
    static FakeKeyboards keyboards;
    return keyboards;
}

void FakeKeyboards::send(std::size_t keyboard, std::uint32_t usage, bool down, long length) {
    if (fakeKeyboards().areSeized[keyboard]) return;
    MacHidValue* const value = [[MacHidValue alloc] init];
    value.usage = usage;
    value.value = down ? 1 : 0;
    value.length = length;
    for (void* const each : std::vector(managers)) {
        // Unretained: the owner may release it in its callback.
        __unsafe_unretained MacHidManager* const manager = of(each);
        if (manager.callback && manager.isScheduled && manager.isOpen)
            manager.callback(manager.context, kIOReturnSuccess, each,
                             (__bridge IOHIDValueRef)value);
    }
}

}  // namespace marrowby

using marrowby::fakeKeyboards;

extern "C" {

uint32_t IOHIDCheckAccess(uint32_t) {
    return fakeKeyboards().isGranted ? kIOHIDAccessTypeGranted : kIOHIDAccessTypeDenied;
}
bool IOHIDRequestAccess(uint32_t request) {
    if (request == kIOHIDRequestTypeListenEvent) ++fakeKeyboards().requests;
    return fakeKeyboards().isGranted;
}

IOHIDManagerRef IOHIDManagerCreate(CFAllocatorRef, IOOptionBits) {
    return (__bridge_retained IOHIDManagerRef)marrowby::counted([[MacHidManager alloc] init]);
}
void IOHIDManagerSetDeviceMatching(IOHIDManagerRef, CFDictionaryRef matching) {
    NSDictionary* const wanted = (__bridge NSDictionary*)matching;
    fakeKeyboards().searches.push_back(
        "page " + std::to_string([wanted[@kIOHIDDeviceUsagePageKey] intValue]) + " usage " +
        std::to_string([wanted[@kIOHIDDeviceUsageKey] intValue]));
}
void IOHIDManagerRegisterInputValueCallback(IOHIDManagerRef manager, IOHIDValueCallback callback,
                                            void* context) {
    of(manager).callback = callback;
    of(manager).context = context;
}
void IOHIDManagerScheduleWithRunLoop(IOHIDManagerRef manager, CFRunLoopRef, CFStringRef) {
    of(manager).isScheduled = true;
}
void IOHIDManagerUnscheduleFromRunLoop(IOHIDManagerRef manager, CFRunLoopRef, CFStringRef) {
    of(manager).isScheduled = false;
}
IOReturn IOHIDManagerOpen(IOHIDManagerRef manager, IOOptionBits) {
    if (!fakeKeyboards().isGranted) return kIOReturnNotPermitted;
    if (fakeKeyboards().openFailure != 0) return fakeKeyboards().openFailure;
    of(manager).isOpen = true;
    return std::ranges::any_of(fakeKeyboards().areSeized, std::identity())
               ? kIOReturnExclusiveAccess
               : kIOReturnSuccess;
}
IOReturn IOHIDManagerClose(IOHIDManagerRef manager, IOOptionBits) {
    of(manager).isOpen = false;
    return kIOReturnSuccess;
}
CFIndex IOHIDValueGetLength(IOHIDValueRef value) {
    return ((__bridge MacHidValue*)value).length;
}
CFIndex IOHIDValueGetIntegerValue(IOHIDValueRef value) {
    return ((__bridge MacHidValue*)value).value;
}
IOHIDElementRef IOHIDValueGetElement(IOHIDValueRef value) {
    return reinterpret_cast<IOHIDElementRef>(value);
}
uint32_t IOHIDElementGetUsagePage(IOHIDElementRef) {
    return 7;
}
uint32_t IOHIDElementGetUsage(IOHIDElementRef element) {
    return ((__bridge MacHidValue*)element).usage;
}
}
