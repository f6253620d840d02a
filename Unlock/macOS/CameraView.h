// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Pages/WindowPage.h"

#include <optional>

#import <AppKit/AppKit.h>

namespace marrowby {

/// Fills `place` with the middle of the picture, mirrored, and frames the face. In a view's
/// drawing.
void drawMirrored(const windowrow::CameraPicture& picture, NSRect place);

}  // namespace marrowby

/// The camera's picture; grey before the first.
@interface MarrowbyCameraView : NSView
- (void)showPicture:(const marrowby::windowrow::Picture&)picture;
@end

/// A bar with a mark at its limit.
@interface MarrowbyMeterView : NSView
- (void)showMeter:(const marrowby::windowrow::Meter&)meter;
@end
