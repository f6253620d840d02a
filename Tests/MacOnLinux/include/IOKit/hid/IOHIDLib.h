// SPDX-License-Identifier: Apache-2.0

// Declares what the adapter uses of the HID manager.
#pragma once
#import <IOKit/IOKitLib.h>

typedef struct __IOHIDManager* IOHIDManagerRef;
typedef struct __IOHIDElement* IOHIDElementRef;
typedef struct __IOHIDValue* IOHIDValueRef;
typedef void (*IOHIDValueCallback)(void* context, IOReturn result, void* sender,
                                   IOHIDValueRef value);

#define kIOHIDDeviceUsagePageKey "DeviceUsagePage"
#define kIOHIDDeviceUsageKey "DeviceUsage"
#define kIOReturnExclusiveAccess ((IOReturn)0xE00002C5)
#define kIOReturnNotPermitted ((IOReturn)0xE00002E2)
enum { kIOHIDOptionsTypeNone = 0 };

#ifdef __cplusplus
extern "C" {
#endif
IOHIDManagerRef IOHIDManagerCreate(CFAllocatorRef allocator, IOOptionBits options);
void IOHIDManagerSetDeviceMatching(IOHIDManagerRef manager, CFDictionaryRef matching);
void IOHIDManagerRegisterInputValueCallback(IOHIDManagerRef manager, IOHIDValueCallback callback,
                                            void* context);
void IOHIDManagerScheduleWithRunLoop(IOHIDManagerRef manager, CFRunLoopRef loop, CFStringRef mode);
void IOHIDManagerUnscheduleFromRunLoop(IOHIDManagerRef manager, CFRunLoopRef loop,
                                       CFStringRef mode);
IOReturn IOHIDManagerOpen(IOHIDManagerRef manager, IOOptionBits options);
IOReturn IOHIDManagerClose(IOHIDManagerRef manager, IOOptionBits options);
CFIndex IOHIDValueGetLength(IOHIDValueRef value);
CFIndex IOHIDValueGetIntegerValue(IOHIDValueRef value);
IOHIDElementRef IOHIDValueGetElement(IOHIDValueRef value);
uint32_t IOHIDElementGetUsagePage(IOHIDElementRef element);
uint32_t IOHIDElementGetUsage(IOHIDElementRef element);
#ifdef __cplusplus
}
#endif
