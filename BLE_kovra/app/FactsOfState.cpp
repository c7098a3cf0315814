#include "BLE_kovra/app/FactsOfState.h"

#include <string>

#include "BLE_kovra/core/AppState.h"
#include "BLE_kovra/core/HelperController.h"
#include "BLE_kovra/devices/HIDMonitor.h"

namespace kovra {

namespace {

using Presence = ApplicationFacts::Presence;

// Returns the name in an identity key (see userKey()), which the last "#" ends.
std::string nameInKey(const std::string& key) { return key.substr(0, key.rfind('#')); }

}  // namespace

ApplicationFacts factsOf(const AppState& state, const HIDMonitor& monitor, const HelperController& helper) {
    ApplicationFacts facts{.isEnabled = state.isEnabled.get(),
                           .mode = std::string(AppState::rawValue(state.mode.get())),
                           .isMuting = state.blocking.get(),
                           .lastWritten = helper.lastWritten().value_or("")};
    AppState::Selection unseen = state.selectedIDs.get();
    for (const HIDDeviceInfo& device : state.devices.get()) {
        if (unseen.erase(device.id) == 0) continue;
        const Presence whileListed = monitor.isInGrace(device.id) ? Presence::inGrace : Presence::connected;
        facts.chosen.push_back({device.name, device.connected ? whileListed : Presence::away});
    }
    for (const std::string& key : unseen) facts.chosen.push_back({nameInKey(key), Presence::away});
    return facts;
}

}  // namespace kovra
