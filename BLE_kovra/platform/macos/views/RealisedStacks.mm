#include "BLE_kovra/platform/macos/views/RealisedStacks.h"

#include "BLE_kovra/platform/macos/views/ViewLayout.h"

// The content of a scroll view. Its origin is at the top, so that scrolling starts there.
@interface KovraDocument : NSView
@end

@implementation KovraDocument

- (BOOL)isFlipped {
    return YES;
}

@end

namespace kovra {

namespace {

void showChildren(ViewChildren<RealisedView>& children, const View& view, const ViewSite& site,
                  const Surroundings& around) {
    const std::vector<std::unique_ptr<RealisedView>> removed = children.show(
        view.children, [&](const View& child, std::size_t) { return realise(child, site, around); },
        [&](RealisedView& element, const View& child, std::size_t) { element.show(child, around); });
    for (const auto& each : removed) [each->outermost() removeFromSuperview];
}

std::vector<std::string> textsOf(const ViewChildren<RealisedView>& children) {
    std::vector<std::string> all;
    for (const auto& child : children) {
        for (std::string& text : child->texts()) all.push_back(std::move(text));
    }
    return all;
}

NSLayoutAttribute attribute(const Stack& stack) {
    if (stack.alignment == Alignment::leading) {
        return stack.axis == Stack::Axis::horizontal ? NSLayoutAttributeTop : NSLayoutAttributeLeading;
    }
    return stack.axis == Stack::Axis::horizontal ? NSLayoutAttributeCenterY : NSLayoutAttributeCenterX;
}

}  // namespace

RealisedStack::RealisedStack(const ViewSite& site) : RealisedView(site), stack_([NSStackView stackViewWithViews:@[]]) {
    [stack_ setDistribution:NSStackViewDistributionFill];
}

std::vector<std::string> RealisedStack::texts() const { return textsOf(children_); }

void RealisedStack::showKind(const View& view, const Surroundings& around) {
    const Stack& stack = std::get<Stack>(view.kind);
    const bool isHorizontal = stack.axis == Stack::Axis::horizontal;
    if (shown_ != stack) {
        [stack_ setOrientation:isHorizontal ? NSUserInterfaceLayoutOrientationHorizontal
                                            : NSUserInterfaceLayoutOrientationVertical];
        [stack_ setAlignment:attribute(stack)];
        if (stack.spacing) [stack_ setSpacing:*stack.spacing];
        shown_ = stack;
    }
    showChildren(children_, view, site(), {around.role, isHorizontal ? std::nullopt : around.width});
    arrange(isHorizontal);
}

void RealisedStack::arrange(bool isHorizontal) {
    NSInteger position = 0;
    for (const auto& child : children_) {
        NSView* each = child->outermost();
        NSArray<NSView*>* arranged = [stack_ arrangedSubviews];
        const bool isInPlace = position < static_cast<NSInteger>([arranged count]) &&
                               [arranged objectAtIndex:static_cast<NSUInteger>(position)] == each;
        const bool isNew = [each superview] != stack_;
        if (!isInPlace) [stack_ insertArrangedSubview:each atIndex:position];
        if (isNew && !isHorizontal && child->takesWidth())
            [[[each widthAnchor] constraintEqualToAnchor:[stack_ widthAnchor]] setActive:YES];
        ++position;
    }
}

RealisedScroll::RealisedScroll(const ViewSite& site)
    : RealisedView(site),
      opening_([[NSScrollView alloc] initWithFrame:NSZeroRect]),
      document_([[KovraDocument alloc] initWithFrame:NSZeroRect]) {
    [opening_ setHasVerticalScroller:YES];
    [opening_ setAutohidesScrollers:YES];
    [opening_ setDrawsBackground:NO];
    [opening_ setBorderType:NSNoBorder];
    [opening_ setDocumentView:document_];
    [document_ setTranslatesAutoresizingMaskIntoConstraints:NO];
    NSView* seen = [opening_ contentView];
    NSLayoutConstraint* matchChildHeight = [[opening_ heightAnchor] constraintEqualToAnchor:[document_ heightAnchor]];
    [matchChildHeight setPriority:belowWindowSize];
    [NSLayoutConstraint activateConstraints:@[
        [[document_ topAnchor] constraintEqualToAnchor:[seen topAnchor]],
        [[document_ leadingAnchor] constraintEqualToAnchor:[seen leadingAnchor]],
        [[document_ widthAnchor] constraintEqualToAnchor:[seen widthAnchor]],
        matchChildHeight,
    ]];
}

std::vector<std::string> RealisedScroll::texts() const { return textsOf(children_); }

void RealisedScroll::showKind(const View& view, const Surroundings& around) {
    showChildren(children_, view, site(), around);
    const RealisedView* child = children_.first();
    if (child != nullptr && [child->outermost() superview] != document_) fill(document_, child->outermost());
}

}  // namespace kovra
