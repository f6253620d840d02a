#pragma once

#import <AppKit/AppKit.h>

/// What the system tells the application, handed on to it.
@interface MarrowbyAppDelegate : NSObject <NSApplicationDelegate>
@end
