#include "BLE_kovra/core/MutingDecision.h"

namespace kovra {

bool decideMuting(AppState::BlockMode mode, bool isEnabled, const std::function<bool()>& anySelectedConnected) {
    if (mode == AppState::BlockMode::onDevice) return isEnabled && anySelectedConnected();
    return isEnabled;
}

}  // namespace kovra
