#pragma once

#import <AppKit/AppKit.h>

#include "BLE_kovra/platform/Drawing.h"

namespace kovra {

// Drawn anew at each resolution that it is shown in.
NSImage* drawingImage(const Drawing& drawing);

}  // namespace kovra
