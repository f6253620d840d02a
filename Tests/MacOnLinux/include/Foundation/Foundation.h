// SPDX-License-Identifier: Apache-2.0

// Declares what the application uses of Foundation and Core Foundation and GNUstep lacks.
#pragma once
#include_next <Foundation/Foundation.h>
#import <objc/runtime.h>
#include <stdint.h>
#include <time.h>

// GNUstep's macro clashes with names of ours.
#undef RELEASE

#define NS_VALID_UNTIL_END_OF_SCOPE __attribute__((objc_precise_lifetime))
#define __unused __attribute__((unused))
#define NS_STRING_ENUM
#define kCFAllocatorDefault ((CFAllocatorRef)NULL)

#ifdef __cplusplus
extern "C" {
#endif
typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFArray* CFArrayRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __CFNumber* CFNumberRef;
typedef const struct __CFString* CFStringRef;
typedef struct __CFRunLoop* CFRunLoopRef;
typedef unsigned long CFTypeID;
typedef long CFIndex;
typedef unsigned char Boolean;
typedef double CFTimeInterval;
typedef int32_t OSStatus;

CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);
CFTypeRef CFBridgingRetain(id object);
id CFBridgingRelease(CFTypeRef __attribute__((cf_consumed)) object);
CFTypeID CFGetTypeID(CFTypeRef object);
CFTypeID CFBooleanGetTypeID(void);
Boolean CFNumberIsFloatType(CFNumberRef number);

extern const CFStringRef kCFRunLoopCommonModes;
extern const CFStringRef kCFRunLoopDefaultMode;
CFRunLoopRef CFRunLoopGetMain(void);
void CFRunLoopPerformBlock(CFRunLoopRef loop, CFTypeRef mode, void (^block)(void));
void CFRunLoopWakeUp(CFRunLoopRef loop);
int32_t CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds, Boolean once);
#ifdef __cplusplus
}
#endif

@interface NSTimer (MacOnLinux)
@property NSTimeInterval tolerance;
@end

// For GNUstep's run loop the common modes are just another mode.
#define NSRunLoopCommonModes NSDefaultRunLoopMode
