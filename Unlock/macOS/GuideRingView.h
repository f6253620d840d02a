#pragma once

#include "Unlock/Pages/WindowPage.h"

#import <AppKit/AppKit.h>

/// The ring around the face that is captured: how far it is, and where to turn to.
@interface MarrowbyGuideRingView : NSView
- (void)showGuide:(const marrowby::windowrow::Guide&)guide;
@end
