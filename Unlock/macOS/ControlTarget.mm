// SPDX-License-Identifier: Apache-2.0
#import "Unlock/macOS/ControlTarget.h"

#import <objc/runtime.h>

@implementation MarrowbyControlTarget {
    void (^_block)(NSControl*);
}

+ (void)attachTo:(NSControl*)control calling:(void (^)(NSControl*))block {
    static const char key = 0;
    MarrowbyControlTarget* const target = [[MarrowbyControlTarget alloc] init];
    target->_block = [block copy];
    objc_setAssociatedObject(control, &key, target, OBJC_ASSOCIATION_RETAIN_NONATOMIC);
    if ([control isKindOfClass:NSTextField.class]) {
        static_cast<NSTextField*>(control).delegate = target;
    } else {
        control.target = target;
        control.action = @selector(called:);
    }
}

- (void)called:(NSControl*)control {
    // Copy: the call may release the control, and this with it.
    void (^const block)(NSControl*) = _block;
    block(control);
}

- (void)controlTextDidChange:(NSNotification*)notification {
    [self called:notification.object];
}

@end
