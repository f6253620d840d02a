// SPDX-License-Identifier: Apache-2.0

// The camera's views without their pictures: GNUstep has no Quartz to draw them with.

#import "Unlock/macOS/CameraView.h"

#include "Platforms/macOS/FoundationText.h"

namespace marrowby {

void drawMirrored(const windowrow::CameraPicture& /*picture*/, NSRect /*place*/) {}

}  // namespace marrowby

@implementation MarrowbyCameraView
- (void)showPicture:(const marrowby::windowrow::Picture&)picture {
    self.accessibilityLabel = marrowby::foundationText(picture.title);
}
- (NSSize)intrinsicContentSize {
    return NSMakeSize(320, 180);
}
@end

@implementation MarrowbyMeterView
- (void)showMeter:(const marrowby::windowrow::Meter&)meter {
    self.accessibilityLabel = marrowby::foundationText(meter.title);
}
- (NSSize)intrinsicContentSize {
    return NSMakeSize(150, 14);
}
@end
