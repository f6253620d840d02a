// SPDX-License-Identifier: Apache-2.0
#pragma once

#import <AppKit/AppKit.h>

/// Forwards the system's events to the application.
@interface MarrowbyAppDelegate : NSObject <NSApplicationDelegate>
@end
