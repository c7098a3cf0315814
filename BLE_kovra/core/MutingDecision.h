#pragma once

#include <functional>

#include "BLE_kovra/core/AppState.h"

namespace kovra {

// Whether the built-in trackpad is to be muted now. With the switch off the answer is no, and nobody looks for devices.
bool decideMuting(AppState::BlockMode mode, bool isEnabled, const std::function<bool()>& anySelectedConnected);

}  // namespace kovra
