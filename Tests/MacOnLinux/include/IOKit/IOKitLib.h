// SPDX-License-Identifier: Apache-2.0

// Declares what the adapters use of the I/O registry.
#pragma once
#import <Foundation/Foundation.h>

typedef uint32_t io_service_t;
typedef uint32_t mach_port_t;
typedef uint32_t IOOptionBits;
typedef int32_t IOReturn;

enum { IO_OBJECT_NULL = 0, kIOMainPortDefault = 0, kIOReturnSuccess = 0 };

#ifdef __cplusplus
extern "C" {
#endif
CFDictionaryRef IOServiceMatching(const char* name);
io_service_t IOServiceGetMatchingService(mach_port_t port,
                                         CFDictionaryRef __attribute__((cf_consumed)) matching);
CFTypeRef IORegistryEntryCreateCFProperty(io_service_t entry, CFStringRef key,
                                          CFAllocatorRef allocator, IOOptionBits options);
IOReturn IOObjectRelease(io_service_t object);
#ifdef __cplusplus
}
#endif
