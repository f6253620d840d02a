// SPDX-License-Identifier: Apache-2.0
#import "Platforms/macOS/PanelView.h"

#include "Platforms/macOS/FoundationText.h"

#include <variant>

namespace marrowby {

namespace {

NSColor* appKitColor(const PanelColor& color) {
    return [NSColor colorWithSRGBRed:color.red green:color.green blue:color.blue alpha:color.alpha];
}

NSPoint appKitPoint(const Point& point) {
    return NSMakePoint(point.x, point.y);
}

void strokeRound(NSBezierPath* path, double width, const PanelColor& color) {
    path.lineWidth = width;
    path.lineCapStyle = NSLineCapStyleRound;
    path.lineJoinStyle = NSLineJoinStyleRound;
    [appKitColor(color) setStroke];
    [path stroke];
}

/// Draws into the focused, flipped view.
struct Draw {
    void operator()(const panelshape::RoundedRectangle& shape) const {
        const Rect& frame = shape.frame;
        [appKitColor(shape.color) setFill];
        [[NSBezierPath
            bezierPathWithRoundedRect:NSMakeRect(frame.x, frame.y, frame.width, frame.height)
                              xRadius:shape.radius
                              yRadius:shape.radius] fill];
    }
    void operator()(const panelshape::Arc& shape) const {
        // From 3 o'clock, clockwise because the view is flipped.
        const double begin = shape.begin * 360 - 90;
        NSBezierPath* const path = [NSBezierPath bezierPath];
        [path appendBezierPathWithArcWithCenter:appKitPoint(shape.centre)
                                         radius:shape.radius
                                     startAngle:begin
                                       endAngle:begin + shape.length * 360
                                      clockwise:NO];
        strokeRound(path, shape.width, shape.color);
    }
    void operator()(const panelshape::Polyline& shape) const {
        if (shape.points.empty()) return;
        NSBezierPath* const path = [NSBezierPath bezierPath];
        [path moveToPoint:appKitPoint(shape.points.front())];
        for (const Point& point : shape.points)
            [path lineToPoint:appKitPoint(point)];
        strokeRound(path, shape.width, shape.color);
    }
    void operator()(const panelshape::Dot& shape) const {
        const double side = 2 * shape.radius;
        [appKitColor(shape.color) setFill];
        [[NSBezierPath
            bezierPathWithOvalInRect:NSMakeRect(shape.centre.x - shape.radius,
                                                shape.centre.y - shape.radius, side, side)] fill];
    }
    void operator()(const panelshape::Text& shape) const {
        NSString* const text = foundationText(shape.text);
        const auto attributes = [&shape](double size) {
            return @{
                NSFontAttributeName : [NSFont systemFontOfSize:size weight:NSFontWeightMedium],
                NSForegroundColorAttributeName : appKitColor(shape.color),
            };
        };
        const double wanted = [text sizeWithAttributes:attributes(shape.size)].width;
        const double share = wanted > shape.frame.width ? shape.frame.width / wanted : 1;
        NSDictionary* const fitting = attributes(shape.size * share);
        const double height = [text sizeWithAttributes:fitting].height;
        [text drawAtPoint:NSMakePoint(shape.frame.x, shape.frame.centre().y - height / 2)
            withAttributes:fitting];
    }
};

}  // namespace

}  // namespace marrowby

@implementation MarrowbyPanelView {
    marrowby::PanelDrawing _drawing;
}

- (void)showDrawing:(const marrowby::PanelDrawing&)drawing {
    _drawing = drawing;
    self.needsDisplay = YES;
}

- (BOOL)isFlipped {
    return YES;
}

- (void)drawRect:(NSRect)__unused dirtyRect {
    for (const marrowby::PanelShape& shape : _drawing)
        std::visit(marrowby::Draw(), shape);
}

@end
