#pragma once

#import <AppKit/AppKit.h>

#include "BLE_kovra/platform/View.h"

namespace kovra {

// The system's own text styles and colors, which follow its light and dark appearance.
NSFont* roleFont(const TextRole& role);
NSColor* roleColor(Color color);

}  // namespace kovra
