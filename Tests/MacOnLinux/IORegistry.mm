// SPDX-License-Identifier: Apache-2.0
#include "Tests/MacOnLinux/IORegistry.h"

#include "Tests/MacOnLinux/Counted.h"

#import <IOKit/IOKitLib.h>

namespace marrowby {

FakeRegistry& fakeRegistry() {
    static FakeRegistry registry;
    return registry;
}

}  // namespace marrowby

using marrowby::counted;
using marrowby::fakeRegistry;

extern "C" {

CFDictionaryRef IOServiceMatching(const char* name) {
    return (__bridge_retained CFDictionaryRef)counted(
        [NSMutableDictionary dictionaryWithObject:@(name) forKey:@"IOProviderClass"]);
}
io_service_t IOServiceGetMatchingService(mach_port_t, CFDictionaryRef matching) {
    NSDictionary* const consumed = (__bridge_transfer NSDictionary*)matching;
    if (!fakeRegistry().hasEntry || ![consumed[@"IOProviderClass"] isEqual:@"IOHIDSystem"])
        return IO_OBJECT_NULL;
    ++fakeRegistry().entriesHeld;
    return 1;
}
CFTypeRef IORegistryEntryCreateCFProperty(io_service_t, CFStringRef key, CFAllocatorRef,
                                          IOOptionBits) {
    if (fakeRegistry().entriesHeld == 0 || ![(__bridge NSString*)key isEqual:@"HIDIdleTime"])
        return nullptr;
    return (__bridge_retained CFTypeRef)counted(@(1'500'000'000ULL));
}
IOReturn IOObjectRelease(io_service_t) {
    --fakeRegistry().entriesHeld;
    return kIOReturnSuccess;
}
}
