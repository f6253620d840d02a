#include "Platforms/macOS/ProcessHardening.h"
#include "Unlock/macOS/AppDelegate.h"

#import <AppKit/AppKit.h>

int main() {
    @autoreleasepool {
        if (!marrowby::makeProcessUndumpable()) {
            NSLog(@"Other processes may look into this one’s memory, so it doesn’t start.");
            return 1;
        }
        NSApplication* const application = NSApplication.sharedApplication;
        // The application does not keep its delegate.
        static MarrowbyAppDelegate* const delegate = [[MarrowbyAppDelegate alloc] init];
        application.delegate = delegate;
        [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
        [application run];
    }
    return 0;
}
