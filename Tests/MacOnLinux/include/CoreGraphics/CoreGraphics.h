// SPDX-License-Identifier: Apache-2.0

// Declares what the adapters use of Core Graphics.
#pragma once
#import <Foundation/Foundation.h>

typedef struct __CGEvent* CGEventRef;
typedef struct __CGEventSource* CGEventSourceRef;
typedef uint64_t CGEventFlags;
typedef int32_t CGEventSourceStateID;
typedef uint32_t CGEventTapLocation;
typedef uint32_t CGEventType;
typedef uint16_t CGKeyCode;
typedef uint32_t CGDirectDisplayID;
typedef int32_t CGError;
typedef uint16_t UniChar;
typedef unsigned long UniCharCount;

enum {
    kCGEventSourceStateHIDSystemState = 1,
    kCGHIDEventTap = 0,
    kCGErrorSuccess = 0,
    kCGEventFlagMaskCommand = 0x100000
};
#define kCGAnyInputEventType ((CGEventType)(~0))

#ifdef __cplusplus
extern "C" {
#endif
CGEventSourceRef CGEventSourceCreate(CGEventSourceStateID state);
CFTimeInterval CGEventSourceSecondsSinceLastEventType(CGEventSourceStateID state, CGEventType type);
CGEventRef CGEventCreateKeyboardEvent(CGEventSourceRef source, CGKeyCode code, bool down);
void CGEventSetFlags(CGEventRef event, CGEventFlags flags);
void CGEventKeyboardSetUnicodeString(CGEventRef event, UniCharCount length, const UniChar* text);
void CGEventPost(CGEventTapLocation tap, CGEventRef event);
bool CGPreflightPostEventAccess(void);
CFDictionaryRef CGSessionCopyCurrentDictionary(void);
CGError CGGetOnlineDisplayList(uint32_t most, CGDirectDisplayID* displays, uint32_t* count);
bool CGDisplayIsBuiltin(CGDirectDisplayID display);
#ifdef __cplusplus
}
#endif
