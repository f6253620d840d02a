// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/RunLoopMainThread.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#import <Foundation/Foundation.h>
#include <dispatch/dispatch.h>
#include <time.h>

namespace marrowby {

namespace {

/// Shared, so that the call survives the destruction of its timer.
using Work = std::shared_ptr<const std::function<void()>>;

Work kept(std::function<void()> work) {
    return std::make_shared<const std::function<void()>>(std::move(work));
}

/// Own autorelease pool: AppKit's is drained only after a user event.
void run(Work work) {
    @autoreleasepool {
        (*work)();
    }
}

class WallClockTimer final : public MainThread::Timer {
  public:
    explicit WallClockTimer(dispatch_source_t source) : source_(source) {}
    WallClockTimer(const WallClockTimer&) = delete;
    WallClockTimer& operator=(const WallClockTimer&) = delete;
    ~WallClockTimer() override { dispatch_source_cancel(source_); }

  private:
    dispatch_source_t source_;
};

class RepeatingTimer final : public MainThread::Timer {
  public:
    explicit RepeatingTimer(NSTimer* timer) : timer_(timer) {}
    RepeatingTimer(const RepeatingTimer&) = delete;
    RepeatingTimer& operator=(const RepeatingTimer&) = delete;
    ~RepeatingTimer() override { [timer_ invalidate]; }

  private:
    NSTimer* timer_;
};

dispatch_time_t wallTime(Date date) {
    const double seconds = std::max(date.time_since_epoch().count() + NSTimeIntervalSince1970, 0.0);
    const double whole = std::floor(seconds);
    const timespec time{.tv_sec = static_cast<time_t>(whole),
                        .tv_nsec = static_cast<long>((seconds - whole) * NSEC_PER_SEC)};
    return dispatch_walltime(&time, 0);
}

std::uint64_t nanoseconds(TimeInterval interval) {
    return static_cast<std::uint64_t>(std::max(interval.count(), 0.0) * NSEC_PER_SEC);
}

}  // namespace

bool RunLoopMainThread::isCurrent() const {
    return NSThread.isMainThread;
}

void RunLoopMainThread::post(std::function<void()> work) {
    const Work held = kept(std::move(work));
    CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{
      run(held);
    });
    CFRunLoopWakeUp(CFRunLoopGetMain());
}

std::unique_ptr<MainThread::Timer> RunLoopMainThread::at(Date fireDate, TimeInterval tolerance,
                                                         std::function<void()> work) {
    const Work held = kept(std::move(work));
    // The main run loop serves the main queue in its common modes.
    dispatch_source_t source =
        dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, dispatch_get_main_queue());
    dispatch_source_set_timer(source, wallTime(fireDate), DISPATCH_TIME_FOREVER,
                              nanoseconds(tolerance));
    dispatch_source_set_event_handler(source, ^{
      run(held);
    });
    dispatch_activate(source);
    return std::make_unique<WallClockTimer>(source);
}

std::unique_ptr<MainThread::Timer> RunLoopMainThread::every(TimeInterval interval,
                                                            TimeInterval tolerance,
                                                            std::function<void()> work) {
    const Work held = kept(std::move(work));
    NSTimer* const timer = [NSTimer timerWithTimeInterval:interval.count()
                                                  repeats:YES
                                                    block:^(NSTimer*) {
                                                      run(held);
                                                    }];
    timer.tolerance = tolerance.count();
    [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
    return std::make_unique<RepeatingTimer>(timer);
}

}  // namespace marrowby
