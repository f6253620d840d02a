// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Pages/WindowPage.h"

#import <AppKit/AppKit.h>

/// The enrolment's ring: progress, and where to turn the head.
@interface MarrowbyGuideRingView : NSView
- (void)showGuide:(const marrowby::windowrow::Guide&)guide;
@end
