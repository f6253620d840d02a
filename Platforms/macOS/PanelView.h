#pragma once

#include "UnlockCore/Platform/PanelDrawing.h"

#import <AppKit/AppKit.h>

/// Draws what a panel shows, from its upper left corner down.
@interface MarrowbyPanelView : NSView
- (void)showDrawing:(const marrowby::PanelDrawing&)drawing;
@end
