#pragma once

#import <AppKit/AppKit.h>

/// What a control is told to call: a block with the control itself, kept by the control.
@interface MarrowbyControlTarget : NSObject <NSTextFieldDelegate>
+ (void)attachTo:(NSControl*)control calling:(void (^)(NSControl* control))block;
@end
