#include "Platforms/macOS/ProcessHardening.h"
#include "Unlock/macOS/AppDelegate.h"
#include "Unlock/macOS/MacApplication.h"

#include <cstdlib>
#include <iostream>
#include <string_view>

#import <AppKit/AppKit.h>

namespace {

/// Says what an unlock would find on this Mac.
[[noreturn]] void selfCheck() {
    using namespace marrowby;
    static MacApplication application;
    static SelfCheck check(
        application.selfCheckServices(),
        [](const std::string& line) { std::cout << line << '\n'
                                                << std::flush; },
        [](bool isAllThere) { std::_Exit(isAllThere ? EXIT_SUCCESS : EXIT_FAILURE); });
    check.start();
    // Not the application's own loop, where a request to quit exits as if all were well.
    for (;;)
        CFRunLoopRun();
}

}  // namespace

int main(int count, char** arguments) {
    @autoreleasepool {
        if (!marrowby::makeProcessUndumpable()) {
            NSLog(@"Other processes may look into this one’s memory, so it doesn’t start.");
            return 1;
        }
        NSApplication* const application = NSApplication.sharedApplication;
        if (count > 1 && std::string_view(arguments[1]) == "--self-check") selfCheck();
        // The application does not keep its delegate.
        static MarrowbyAppDelegate* const delegate = [[MarrowbyAppDelegate alloc] init];
        application.delegate = delegate;
        [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
        [application run];
    }
    return 0;
}
