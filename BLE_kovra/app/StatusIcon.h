#pragma once

#include "BLE_kovra/platform/Drawing.h"

namespace kovra {

// Returns the icon of the status item, 18 by 18 points: a trackpad. If `active`, which means muted, it has a slash.
Drawing makeIcon(bool active);

}  // namespace kovra
