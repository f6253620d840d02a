// SPDX-License-Identifier: Apache-2.0
#import "Unlock/macOS/GuideRingView.h"

#import "Unlock/macOS/CameraView.h"

#include <cmath>
#include <numbers>

namespace {

constexpr CGFloat side = 180;
constexpr CGFloat radius = 72;
constexpr CGFloat lineWidth = 8;
constexpr CGFloat markSize = 7;

}  // namespace

@implementation MarrowbyGuideRingView {
    double _progress;
    std::optional<double> _direction;
    std::optional<marrowby::windowrow::CameraPicture> _picture;
}

- (void)showGuide:(const marrowby::windowrow::Guide&)guide {
    _progress = guide.progress;
    _direction = guide.direction;
    _picture = guide.picture;
    self.needsDisplay = YES;
}

- (NSSize)intrinsicContentSize {
    return NSMakeSize(side, side);
}

- (void)drawRect:(NSRect)__unused dirtyRect {
    const NSPoint centre = NSMakePoint(NSMidX(self.bounds), NSMidY(self.bounds));
    if (_picture) {
        const CGFloat inner = radius - lineWidth;
        const NSRect place = NSMakeRect(centre.x - inner, centre.y - inner, 2 * inner, 2 * inner);
        [NSGraphicsContext saveGraphicsState];
        [[NSBezierPath bezierPathWithOvalInRect:place] addClip];
        marrowby::drawMirrored(*_picture, place);
        [NSGraphicsContext restoreGraphicsState];
    }
    // Degrees, counter-clockwise from 3 o'clock.
    [self strokeFrom:90 by:-360 around:centre in:NSColor.quaternaryLabelColor];
    [self strokeFrom:90 by:-360 * _progress around:centre in:NSColor.controlAccentColor];
    if (!_direction) return;
    const CGFloat angle = (90 - *_direction) * std::numbers::pi / 180;
    const NSPoint mark = NSMakePoint(centre.x + (radius - 3 * markSize) * std::cos(angle),
                                     centre.y + (radius - 3 * markSize) * std::sin(angle));
    [NSColor.labelColor setFill];
    [[NSBezierPath bezierPathWithOvalInRect:NSMakeRect(mark.x - markSize, mark.y - markSize,
                                                       2 * markSize, 2 * markSize)] fill];
}

- (void)strokeFrom:(CGFloat)begin by:(CGFloat)length around:(NSPoint)centre in:(NSColor*)color {
    NSBezierPath* const path = [NSBezierPath bezierPath];
    [path appendBezierPathWithArcWithCenter:centre
                                     radius:radius
                                 startAngle:begin
                                   endAngle:begin + length
                                  clockwise:YES];
    path.lineWidth = lineWidth;
    path.lineCapStyle = NSLineCapStyleRound;
    [color setStroke];
    if (length != 0) [path stroke];
}

@end
