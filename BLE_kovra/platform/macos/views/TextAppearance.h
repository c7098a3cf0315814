#pragma once

#import <AppKit/AppKit.h>

#include "BLE_kovra/platform/View.h"

namespace kovra {

// Return the system's own text styles and colors. The colors follow the light and dark appearance.
NSFont* roleFont(const TextRole& role);
NSColor* roleColor(Color color);

}  // namespace kovra
