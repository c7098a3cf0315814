#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/core/Published.h"
#include "BLE_kovra/devices/HIDDeviceInfo.h"

namespace kovra {

class PreferencesStore;

// The application's state: the devices, the user's choices and the last decision. The constructor loads the choices.
// After that, this class only writes to the store and does not read it again.
//
// This class does not save changes by itself. Its subscriber calls saveSelected() or saveMode(), or writes the switch
// to `defaults`. A selected mouse stays selected while it is disconnected.
class AppState {
  public:
    enum class BlockMode {
        always,    // mute whenever the switch is on
        onDevice,  // mute only while a chosen device is connected
    };
    // Returns nullopt for any text but "always" and "onDevice".
    static std::optional<BlockMode> modeFromRawValue(std::string_view rawValue);
    static std::string_view rawValue(BlockMode mode);

    // The identity keys of the selected devices (see userKey()).
    using Selection = std::set<std::string, std::less<>>;

    explicit AppState(PreferencesStore& store);

    static AppState& shared();

    Published<std::vector<HIDDeviceInfo>> devices{{}};  // in the order of HIDMonitor
    Published<Selection> selectedIDs{{}};
    Published<bool> isEnabled{true};  // the switch
    Published<BlockMode> mode{BlockMode::onDevice};
    Published<bool> blocking{false};  // the last decision; never saved

    PreferencesStore& defaults;
    const std::string kSelected = "selectedDeviceIDs";
    const std::string kEnabled = "isEnabled";
    const std::string kMode = "blockMode";
    const std::string kAdviceShown = "trayAdviceShown";  // no choice of the user: the window has shown the advice

    void saveSelected() const;
    void saveMode() const;

    bool anySelectedConnected() const;
};

}  // namespace kovra
