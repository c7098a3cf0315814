#pragma once

#import <AppKit/AppKit.h>

#include "BLE_kovra/platform/View.h"

namespace kovra {

// What gives way before the window grows, which AppKit prevents with 500.
constexpr NSLayoutPriority beforeTheWindowGrows = 490;

// The inner one on all four sides of the outer, as a part of it.
void fill(NSView* outer, NSView* inner);

NSView* padded(NSView* inner, const Padding& padding);
// `takesWidth`: the inner one takes what width the frame has; otherwise it is placed in it.
NSView* framed(NSView* inner, const Frame& frame, bool takesWidth);
// In the middle, no larger than the outer one.
void placeInTheMiddle(NSView* outer, NSView* inner);

}  // namespace kovra
