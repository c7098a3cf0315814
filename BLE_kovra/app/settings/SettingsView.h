#pragma once

#include "BLE_kovra/platform/View.h"

namespace kovra {

class AppState;
class L10n;
struct HIDDeviceInfo;

// What the settings window shows: the whole state at once, each control writing straight into it. Nothing here has to
// be applied or can be taken back.
//
// A row edits the device that it shows, by its id, wherever the row stands by then.
class SettingsView {
  public:
    // Both outlive the view and what it makes.
    SettingsView(AppState& state, const L10n& texts) : state_(state), texts_(texts) {}

    // As the state is now.
    View body() const;

  private:
    View deviceArea() const;
    View deviceRow(const HIDDeviceInfo& device) const;
    View statusLine() const;
    View footer() const;

    AppState& state_;
    const L10n& texts_;
};

}  // namespace kovra
