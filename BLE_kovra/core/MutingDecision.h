#pragma once

#include <functional>

#include "BLE_kovra/core/AppState.h"

namespace kovra {

// Returns whether to mute the built-in trackpad. Calls `anySelectedConnected` only in mode onDevice with the switch on.
bool decideMuting(AppState::BlockMode mode, bool isEnabled, const std::function<bool()>& anySelectedConnected);

}  // namespace kovra
