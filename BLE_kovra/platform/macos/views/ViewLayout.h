#pragma once

#import <AppKit/AppKit.h>

#include "BLE_kovra/platform/View.h"

namespace kovra {

// The priority of views that shrink before the window grows. AppKit keeps a window's size with priority 500.
constexpr NSLayoutPriority belowWindowSize = 490;

// Adds the inner view to the outer one and pins it to all four edges.
void fill(NSView* outer, NSView* inner);

NSView* padded(NSView* inner, const Padding& padding);
// If `takesWidth` is true, the inner view takes the whole width of the frame. Otherwise the frame aligns it.
NSView* framed(NSView* inner, const Frame& frame, bool takesWidth);
// Adds the inner view to the outer one, centered and no larger than it.
void centerInside(NSView* outer, NSView* inner);

}  // namespace kovra
