#pragma once

#include "BLE_kovra/platform/Drawing.h"

namespace kovra {

// The status item's picture, 18 by 18 points: a trackpad, with a slash through it when `active`, which is while the
// trackpad is muted. Drawn anew at each call.
Drawing makeIcon(bool active);

}  // namespace kovra
