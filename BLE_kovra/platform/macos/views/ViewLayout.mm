#include "BLE_kovra/platform/macos/views/ViewLayout.h"

namespace kovra {

namespace {

NSView* box() {
    NSView* made = [[NSView alloc] initWithFrame:NSZeroRect];
    [made setTranslatesAutoresizingMaskIntoConstraints:NO];
    return made;
}

void add(NSView* outer, NSView* inner) {
    [inner setTranslatesAutoresizingMaskIntoConstraints:NO];
    [outer addSubview:inner];
}

void pin(NSView* outer, NSView* inner, const Padding& padding) {
    add(outer, inner);
    [NSLayoutConstraint activateConstraints:@[
        [[inner leadingAnchor] constraintEqualToAnchor:[outer leadingAnchor] constant:padding.horizontal],
        [[outer trailingAnchor] constraintEqualToAnchor:[inner trailingAnchor] constant:padding.horizontal],
        [[inner topAnchor] constraintEqualToAnchor:[outer topAnchor] constant:padding.vertical],
        [[outer bottomAnchor] constraintEqualToAnchor:[inner bottomAnchor] constant:padding.vertical],
    ]];
}

void activate(NSLayoutConstraint* constraint) { [constraint setActive:YES]; }

void bound(NSLayoutDimension* dimension, std::optional<double> length, std::optional<double> most) {
    if (length) activate([dimension constraintEqualToConstant:*length]);
    if (most && *most != Frame::unbounded) activate([dimension constraintLessThanOrEqualToConstant:*most]);
}

}  // namespace

void fill(NSView* outer, NSView* inner) { pin(outer, inner, {}); }

NSView* padded(NSView* inner, const Padding& padding) {
    NSView* outer = box();
    pin(outer, inner, padding);
    return outer;
}

NSView* framed(NSView* inner, const Frame& frame, bool takesWidth) {
    NSView* outer = box();
    bound([outer widthAnchor], frame.width, frame.maxWidth);
    bound([outer heightAnchor], frame.height, frame.maxHeight);
    if (takesWidth || !(frame.width || frame.maxWidth)) {
        fill(outer, inner);
        return outer;
    }
    add(outer, inner);
    activate([[inner topAnchor] constraintEqualToAnchor:[outer topAnchor]]);
    activate([[inner bottomAnchor] constraintEqualToAnchor:[outer bottomAnchor]]);
    activate([[inner leadingAnchor] constraintGreaterThanOrEqualToAnchor:[outer leadingAnchor]]);
    activate([[inner trailingAnchor] constraintLessThanOrEqualToAnchor:[outer trailingAnchor]]);
    if (frame.alignment == Alignment::center)
        activate([[inner centerXAnchor] constraintEqualToAnchor:[outer centerXAnchor]]);
    else
        activate([[inner leadingAnchor] constraintEqualToAnchor:[outer leadingAnchor]]);
    return outer;
}

void centerInside(NSView* outer, NSView* inner) {
    add(outer, inner);
    activate([[inner centerXAnchor] constraintEqualToAnchor:[outer centerXAnchor]]);
    activate([[inner centerYAnchor] constraintEqualToAnchor:[outer centerYAnchor]]);
    activate([[inner topAnchor] constraintGreaterThanOrEqualToAnchor:[outer topAnchor]]);
    activate([[inner leadingAnchor] constraintGreaterThanOrEqualToAnchor:[outer leadingAnchor]]);
}

}  // namespace kovra
