// SPDX-License-Identifier: Apache-2.0
#import "Unlock/macOS/CameraView.h"

#include "Platforms/macOS/CoreGraphicsBitmap.h"
#include "Platforms/macOS/FoundationText.h"

#include <algorithm>

namespace {

constexpr NSSize pictureSize{320, 180};
constexpr NSSize meterSize{150, 14};
constexpr CGFloat corner = 8;
constexpr CGFloat frameWidth = 2;

NSBezierPath* rounded(NSRect rect, CGFloat radius) {
    return [NSBezierPath bezierPathWithRoundedRect:rect xRadius:radius yRadius:radius];
}

}  // namespace

namespace marrowby {

void drawMirrored(const windowrow::CameraPicture& picture, NSRect place) {
    const auto image = coreGraphicsImage(picture.image);
    if (!image) return;
    const CGFloat width = picture.image.width();
    const CGFloat height = picture.image.height();
    const CGFloat scale = std::max(place.size.width / width, place.size.height / height);
    CGContextRef const context = NSGraphicsContext.currentContext.CGContext;
    CGContextSaveGState(context);
    CGContextTranslateCTM(context, NSMidX(place), NSMidY(place));
    CGContextScaleCTM(context, -scale, scale);
    CGContextTranslateCTM(context, -width / 2, -height / 2);
    CGContextDrawImage(context, CGRectMake(0, 0, width, height), image.get());
    if (picture.face) {
        const Rect& face = *picture.face;
        [NSColor.systemGreenColor setStroke];
        // The picture's rows go down, the view's up.
        NSBezierPath* const frame = rounded(
            NSMakeRect(face.x, height - face.y - face.height, face.width, face.height), corner);
        frame.lineWidth = frameWidth / scale;
        [frame stroke];
    }
    CGContextRestoreGState(context);
}

}  // namespace marrowby

@implementation MarrowbyCameraView {
    std::optional<marrowby::windowrow::CameraPicture> _picture;
}

- (void)showPicture:(const marrowby::windowrow::Picture&)picture {
    self.accessibilityElement = YES;
    self.accessibilityRole = NSAccessibilityImageRole;
    self.accessibilityLabel = marrowby::foundationText(picture.title);
    _picture = picture.picture;
    self.needsDisplay = YES;
}

- (NSSize)intrinsicContentSize {
    return pictureSize;
}

- (void)drawRect:(NSRect)__unused dirtyRect {
    [rounded(self.bounds, corner) addClip];
    [NSColor.quaternaryLabelColor setFill];
    NSRectFill(self.bounds);
    if (_picture) marrowby::drawMirrored(*_picture, self.bounds);
}

@end

@implementation MarrowbyMeterView {
    double _level;
    double _limit;
    BOOL _isGood;
}

- (void)showMeter:(const marrowby::windowrow::Meter&)meter {
    _level = meter.level;
    _limit = meter.limit;
    _isGood = meter.isGood;
    self.accessibilityElement = YES;
    self.accessibilityRole = NSAccessibilityLevelIndicatorRole;
    self.accessibilityLabel = marrowby::foundationText(meter.title);
    self.accessibilityValue = marrowby::foundationText(meter.detail);
    self.needsDisplay = YES;
}

- (NSSize)intrinsicContentSize {
    return meterSize;
}

- (void)drawRect:(NSRect)__unused dirtyRect {
    constexpr CGFloat inset = 4;
    constexpr CGFloat radius = 3;
    const NSRect groove = NSInsetRect(self.bounds, 1, inset);
    [NSColor.quaternaryLabelColor setFill];
    [rounded(groove, radius) fill];
    NSRect bar = groove;
    bar.size.width *= _level;
    [_isGood ? NSColor.systemGreenColor : NSColor.systemOrangeColor setFill];
    [rounded(bar, radius) fill];
    [NSColor.labelColor setFill];
    NSRectFill(
        NSMakeRect(NSMinX(groove) + groove.size.width * _limit - 1, 0, 2, self.bounds.size.height));
}

@end
