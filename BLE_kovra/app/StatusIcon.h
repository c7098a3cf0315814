#pragma once

#include "BLE_kovra/platform/Drawing.h"

namespace kovra {

// The icon of the status item, 18 by 18 points: a trackpad, with a slash if `active` (muted).
Drawing makeIcon(bool active);

}  // namespace kovra
