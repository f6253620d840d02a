// SPDX-License-Identifier: Apache-2.0

// Implements include/Foundation and include/dispatch, all on the main run loop.

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

#import <Foundation/Foundation.h>
#include <dispatch/dispatch.h>

// ---- Objects ----

namespace {

/// Associated objects by owner and key. Never freed, because some objects live until the process
/// ends.
auto& associations = *new std::map<std::pair<const void*, const void*>, id>;

}  // namespace

extern "C" {

id objc_getAssociatedObject(id object, const void* key) {
    const auto entry = associations.find({(__bridge void*)object, key});
    return entry == associations.end() ? nil : entry->second;
}

void objc_setAssociatedObject(id object, const void* key, id value, unsigned long) {
    associations[{(__bridge void*)object, key}] = value;
}

void objc_removeAssociatedObjects(__unsafe_unretained id object) {
    const void* const owner = (__bridge void*)object;
    const auto first = associations.lower_bound({owner, nullptr});
    auto last = first;
    while (last != associations.end() && last->first.first == owner)
        ++last;
    // Released after the erase: a dealloc may change the map.
    const std::map<std::pair<const void*, const void*>, id> gone(first, last);
    associations.erase(first, last);
}

bool MacObjectIsOf(void* object, const char* className) {
    return [(__bridge id)object isKindOfClass:objc_getClass(className)];
}

// ---- Core Foundation ----

CFTypeRef CFRetain(CFTypeRef object) {
    return (__bridge_retained CFTypeRef)(__bridge id)object;
}
void CFRelease(CFTypeRef object) {
    (void)(__bridge_transfer id)object;
}
CFTypeRef CFBridgingRetain(id object) {
    return (__bridge_retained CFTypeRef)object;
}
id CFBridgingRelease(CFTypeRef object) {
    return (__bridge_transfer id)object;
}
CFTypeID CFBooleanGetTypeID(void) {
    return 1;
}
CFTypeID CFGetTypeID(CFTypeRef object) {
    NSNumber* const number = (__bridge NSNumber*)object;
    const bool isBoolean =
        [number isKindOfClass:NSNumber.class] && std::strcmp(number.objCType, @encode(BOOL)) == 0;
    return isBoolean ? CFBooleanGetTypeID() : 0;
}
Boolean CFNumberIsFloatType(CFNumberRef object) {
    const char type = *((__bridge NSNumber*)object).objCType;
    return type == 'd' || type == 'f';
}

const CFStringRef kCFRunLoopCommonModes = nullptr;
const CFStringRef kCFRunLoopDefaultMode = nullptr;
CFRunLoopRef CFRunLoopGetMain(void) {
    return nullptr;
}
void CFRunLoopWakeUp(CFRunLoopRef) {}
void CFRunLoopPerformBlock(CFRunLoopRef, CFTypeRef, void (^block)(void)) {
    dispatch_async(nil, block);
}
int32_t CFRunLoopRunInMode(CFStringRef, CFTimeInterval seconds, Boolean) {
    [NSRunLoop.mainRunLoop runMode:NSDefaultRunLoopMode
                        beforeDate:[NSDate dateWithTimeIntervalSinceNow:seconds]];
    return 0;
}
}

@implementation NSTimer (MacOnLinux)
- (NSTimeInterval)tolerance {
    return 0;
}
- (void)setTolerance:(NSTimeInterval)__unused tolerance {
}
@end

/// Compiled here without ARC, so that no autorelease pool holds the result, as on a Mac.
@implementation NSMutableArray (MacOnLinux)
+ (instancetype)array {
    return [[self alloc] init];
}
@end

// ---- Queues and timers ----

@interface MacQueue : NSObject
@end
@implementation MacQueue
@end

@interface MacCall : NSObject
@property(nonatomic, copy) void (^block)(void);
- (void)run;
@end
@implementation MacCall
- (void)run {
    void (^const block)(void) = self.block;
    self.block = nil;
    block();
}
@end

@interface MacTimerSource : NSObject
@property(nonatomic) NSTimer* timer;
@property(nonatomic) NSTimeInterval fireTime;
@property(nonatomic, copy) void (^handler)(void);
- (void)fired;
@end
@implementation MacTimerSource
- (void)fired {
    void (^const handler)(void) = self.handler;
    if (handler) handler();
}
@end

extern "C" {

dispatch_queue_t dispatch_get_main_queue(void) {
    static MacQueue* const queue = [[MacQueue alloc] init];
    return queue;
}
dispatch_queue_t dispatch_get_global_queue(intptr_t, uintptr_t) {
    return dispatch_get_main_queue();
}
dispatch_queue_t dispatch_queue_create(const char*, dispatch_queue_attr_t) {
    return dispatch_get_main_queue();
}
dispatch_queue_attr_t dispatch_queue_attr_make_with_qos_class(dispatch_queue_attr_t attributes, int,
                                                              int) {
    return attributes;
}
void dispatch_async(dispatch_queue_t, void (^block)(void)) {
    MacCall* const call = [[MacCall alloc] init];
    call.block = block;
    [call performSelectorOnMainThread:@selector(run) withObject:nil waitUntilDone:NO];
}
dispatch_time_t dispatch_walltime(const struct timespec* when, int64_t delta) {
    return static_cast<dispatch_time_t>(when->tv_sec) * NSEC_PER_SEC +
           static_cast<dispatch_time_t>(when->tv_nsec + delta);
}
dispatch_source_t dispatch_source_create(dispatch_source_type_t, uintptr_t, uintptr_t,
                                         dispatch_queue_t) {
    return [[MacTimerSource alloc] init];
}
void dispatch_source_set_timer(dispatch_source_t source, dispatch_time_t start, uint64_t,
                               uint64_t) {
    source.fireTime = static_cast<NSTimeInterval>(start) / NSEC_PER_SEC;
}
void dispatch_source_set_event_handler(dispatch_source_t source, void (^handler)(void)) {
    source.handler = handler;
}
void dispatch_source_cancel(dispatch_source_t source) {
    [source.timer invalidate];
    source.timer = nil;
    source.handler = nil;
}
void dispatch_activate(dispatch_source_t source) {
    const NSTimeInterval wait = source.fireTime - NSDate.date.timeIntervalSince1970;
    source.timer = [NSTimer scheduledTimerWithTimeInterval:std::max(wait, 0.0001)
                                                    target:source
                                                  selector:@selector(fired)
                                                  userInfo:nil
                                                   repeats:NO];
}
}
