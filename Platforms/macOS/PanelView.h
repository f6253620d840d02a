// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/PanelDrawing.h"

#import <AppKit/AppKit.h>

/// Draws a panel's content; origin at the upper left.
@interface MarrowbyPanelView : NSView
- (void)showDrawing:(const marrowby::PanelDrawing&)drawing;
@end
