#pragma once

#include "BLE_kovra/platform/Drawing.h"

namespace kovra {

// Returns the icon of the status item: a trackpad, 18 by 18 points. If `active` is true, which means "muted", the icon
// has a slash. The icon also has glyphs for bars with few pixels, in which a gap surrounds the slash.
Drawing makeIcon(bool active);

}  // namespace kovra
