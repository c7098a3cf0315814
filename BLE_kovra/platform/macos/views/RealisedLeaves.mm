#include "BLE_kovra/platform/macos/views/RealisedLeaves.h"

#include "BLE_kovra/platform/macos/foundation/FoundationString.h"
#include "BLE_kovra/platform/macos/views/TextAppearance.h"
#include "BLE_kovra/platform/macos/views/ViewLayout.h"

@interface KovraDot : NSView {
    kovra::Circle _circle;
}
@property(nonatomic) kovra::Circle circle;
@end

@implementation KovraDot

@synthesize circle = _circle;

- (void)drawRect:(NSRect)dirtyRect {
    static_cast<void>(dirtyRect);
    const kovra::Circle circle = [self circle];
    [[kovra::roleColor(circle.fill) colorWithAlphaComponent:circle.opacity] set];
    [[NSBezierPath bezierPathWithOvalInRect:[self bounds]] fill];
}

@end

namespace kovra {

void RealisedText::showKind(const View& view, const Surroundings& around) {
    const std::string& content = std::get<Text>(view.kind).content;
    const bool isInRow = !around.width;
    if (label_ == nil && isInRow && around.role.font != Font::standard) label_ = [NSTextField labelWithString:@""];
    if (label_ == nil) {
        label_ = [NSTextField wrappingLabelWithString:@""];
        [label_ setSelectable:NO];
        // In a row, AppKit wraps the text at the width that the row leaves.
        if (isInRow)
            [label_ setContentCompressionResistancePriority:belowWindowSize
                                             forOrientation:NSLayoutConstraintOrientationHorizontal];
        else
            [label_ setPreferredMaxLayoutWidth:*around.width];
    }
    if (content != shown_) [label_ setStringValue:foundationString(content)];
    shown_ = content;
    if (role_ == around.role) return;
    role_ = around.role;
    [label_ setFont:roleFont(*role_)];
    [label_ setTextColor:roleColor(role_->color)];
}

RealisedCircle::RealisedCircle(const ViewSite& site)
    : RealisedView(site), dot_([[KovraDot alloc] initWithFrame:NSZeroRect]) {}

NSView* RealisedCircle::innermost() const { return dot_; }

void RealisedCircle::showKind(const View& view, const Surroundings&) {
    const Circle& circle = std::get<Circle>(view.kind);
    if (shown_ == circle) return;
    shown_ = circle;
    [dot_ setCircle:circle];
    [dot_ setNeedsDisplay:YES];
}

RealisedDivider::RealisedDivider(const ViewSite& site)
    : RealisedView(site), line_([[NSBox alloc] initWithFrame:NSZeroRect]) {
    [line_ setBoxType:NSBoxSeparator];
    [[[line_ heightAnchor] constraintEqualToConstant:1] setActive:YES];
}

}  // namespace kovra
