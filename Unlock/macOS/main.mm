// SPDX-License-Identifier: Apache-2.0
#import "Platforms/macOS/BundleCatalogue.h"
#include "Platforms/macOS/ProcessHardening.h"
#include "Unlock/macOS/AppDelegate.h"
#include "Unlock/macOS/MacApplication.h"

#include <cstdlib>
#include <iostream>
#include <string_view>

#import <AppKit/AppKit.h>

namespace {

[[noreturn]] void selfCheck() {
    using namespace marrowby;
    static MacApplication application;
    static SelfCheck check(
        application.selfCheckServices(),
        [](const std::string& line) { std::cout << line << '\n'
                                                << std::flush; },
        [](bool isAllThere) { std::_Exit(isAllThere ? EXIT_SUCCESS : EXIT_FAILURE); });
    check.start();
    // Not NSApplication's loop, where a quit request would exit with 0.
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
        static const marrowby::BundleCatalogue catalogue;
        marrowby::useCatalogue(&catalogue);
        NSApplication* const application = NSApplication.sharedApplication;
        if (count > 1 && std::string_view(arguments[1]) == "--self-check") selfCheck();
        // NSApplication does not retain its delegate.
        static MarrowbyAppDelegate* const delegate = [[MarrowbyAppDelegate alloc] init];
        application.delegate = delegate;
        [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
        [application run];
    }
    return 0;
}
