// SPDX-License-Identifier: Apache-2.0
#pragma once

#import <AppKit/AppKit.h>

/// Target of a control: a block that gets the control; retained by the control.
@interface MarrowbyControlTarget : NSObject <NSTextFieldDelegate>
+ (void)attachTo:(NSControl*)control calling:(void (^)(NSControl* control))block;
@end
