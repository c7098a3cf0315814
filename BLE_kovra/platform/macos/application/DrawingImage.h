#pragma once

#import <AppKit/AppKit.h>

#include "BLE_kovra/platform/Drawing.h"

namespace kovra {

// Returns an image that is drawn again for each resolution at which it is shown.
NSImage* drawingImage(const Drawing& drawing);

}  // namespace kovra
