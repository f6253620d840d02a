// SPDX-License-Identifier: Apache-2.0

// Declares the used part of dispatch; all queues and timers run on the main run loop.
#pragma once
#import <Foundation/Foundation.h>

#define NSEC_PER_SEC 1000000000ULL
#define DISPATCH_TIME_FOREVER (~0ULL)
#define DISPATCH_SOURCE_TYPE_TIMER 1
#define DISPATCH_QUEUE_SERIAL NULL
enum { QOS_CLASS_USER_INITIATED = 0x19 };

@class MacQueue, MacTimerSource;
typedef MacQueue* dispatch_queue_t;
typedef void* dispatch_queue_attr_t;
typedef MacTimerSource* dispatch_source_t;
typedef uint64_t dispatch_time_t;
typedef int dispatch_source_type_t;

#ifdef __cplusplus
extern "C" {
#endif
dispatch_queue_t dispatch_get_main_queue(void);
dispatch_queue_t dispatch_get_global_queue(intptr_t quality, uintptr_t flags);
dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attributes);
dispatch_queue_attr_t dispatch_queue_attr_make_with_qos_class(dispatch_queue_attr_t attributes,
                                                              int quality, int priority);
void dispatch_async(dispatch_queue_t queue, void (^block)(void));
dispatch_time_t dispatch_walltime(const struct timespec* when, int64_t delta);
dispatch_source_t dispatch_source_create(dispatch_source_type_t type, uintptr_t handle,
                                         uintptr_t mask, dispatch_queue_t queue);
void dispatch_source_set_timer(dispatch_source_t source, dispatch_time_t start, uint64_t interval,
                               uint64_t leeway);
void dispatch_source_set_event_handler(dispatch_source_t source, void (^handler)(void));
void dispatch_source_cancel(dispatch_source_t source);
void dispatch_activate(dispatch_source_t source);
#ifdef __cplusplus
}
#endif
