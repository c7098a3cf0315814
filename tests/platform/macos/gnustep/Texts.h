#pragma once

#import <AppKit/AppKit.h>

#include <string>
#include <vector>

#include "BLE_kovra/platform/macos/foundation/FoundationString.h"

namespace kovra {

// Returns all views of this class below the view, from the outside to the inside.
template <typename Kind>
std::vector<Kind*> viewsBelow(NSView* view) {
    std::vector<Kind*> found;
    for (NSView* each in [view subviews]) {
        if ([each isKindOfClass:[Kind class]]) found.push_back(static_cast<Kind*>(each));
        for (Kind* inner : viewsBelow<Kind>(each)) found.push_back(inner);
    }
    return found;
}

// Returns the first button below the view with this title, or nil.
inline NSButton* buttonWithTitle(NSView* view, const std::string& title) {
    for (NSButton* button : viewsBelow<NSButton>(view)) {
        if (utf8String([button title]) == title) return button;
    }
    return nil;
}

}  // namespace kovra
