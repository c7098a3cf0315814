#pragma once

#include "BLE_kovra/platform/Application.h"

namespace kovra {

class AppState;
class HelperController;
class HIDMonitor;

// Returns what the application knows now. A chosen device that has not been seen since the start has the name in its
// identity key.
ApplicationFacts factsOf(const AppState& state, const HIDMonitor& monitor, const HelperController& helper);

}  // namespace kovra
