#include "BLE_kovra/platform/macos/application/DrawingImage.h"

#include <variant>

namespace kovra {

namespace {

struct Path {
    NSBezierPath* operator()(const RoundedRectangle& rectangle) const {
        return [NSBezierPath bezierPathWithRoundedRect:NSMakeRect(rectangle.origin.x, rectangle.origin.y,
                                                                  rectangle.size.width, rectangle.size.height)
                                               xRadius:rectangle.cornerRadii.width
                                               yRadius:rectangle.cornerRadii.height];
    }
    NSBezierPath* operator()(const Segment& segment) const {
        NSBezierPath* path = [NSBezierPath bezierPath];
        [path moveToPoint:NSMakePoint(segment.from.x, segment.from.y)];
        [path lineToPoint:NSMakePoint(segment.to.x, segment.to.y)];
        return path;
    }
};

void draw(const Drawing& drawing) noexcept {
    [[NSColor blackColor] set];
    for (const Stroke& stroke : drawing.strokes) {
        NSBezierPath* path = std::visit(Path{}, stroke.shape);
        [path setLineWidth:stroke.lineWidth];
        [path stroke];
    }
}

}  // namespace

NSImage* drawingImage(const Drawing& drawing) {
    const Drawing copy = drawing;  // AppKit draws later, on any thread
    return [NSImage imageWithSize:NSMakeSize(copy.size.width, copy.size.height)
                          flipped:NO
                   drawingHandler:^BOOL(NSRect) {
                     draw(copy);
                     return YES;
                   }];
}

}  // namespace kovra
