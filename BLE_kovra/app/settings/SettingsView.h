#pragma once

#include <string>
#include <utility>

#include "BLE_kovra/platform/View.h"

namespace kovra {

class AppState;
class L10n;
struct HIDDeviceInfo;

// The content of the settings window. Each control writes to the state at once; there is no Apply button.
//
// The check box of a device selects the device by its id, not by its position. So it selects the right one even if the
// list was reordered after body() was called.
class SettingsView {
  public:
    // `state` and `texts` must outlive this object and the views that it returns.
    SettingsView(AppState& state, const L10n& texts) : state_(state), texts_(texts) {}

    // Adds the text of this key above the footer; an empty key removes it.
    void setAdvice(std::string key) { advice_ = std::move(key); }

    // Returns the content for the current state.
    View body() const;

  private:
    View caption(const std::string& key) const;  // wraps to the width of the window
    View deviceArea() const;
    View deviceRow(const HIDDeviceInfo& device) const;
    View statusLine() const;
    View footer() const;

    AppState& state_;
    const L10n& texts_;
    std::string advice_;
};

}  // namespace kovra
