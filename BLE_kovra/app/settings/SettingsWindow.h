#pragma once

#include <memory>
#include <vector>

#include "BLE_kovra/app/settings/SettingsView.h"
#include "BLE_kovra/core/Published.h"

namespace kovra {

class MainQueue;
class Window;
class WindowHost;

// The settings window: made once, hidden when it is closed, shown again.
//
// While it is visible every change of the state rebuilds what it shows, one queue turn later and once however many
// changes came. While it is hidden nothing is rebuilt; it is brought up to date as it is shown.
class SettingsWindow {
  public:
    // The references outlive the window. It is not shown yet.
    SettingsWindow(WindowHost& windows, MainQueue& queue, AppState& state, const L10n& texts);
    SettingsWindow(const SettingsWindow&) = delete;
    SettingsWindow& operator=(const SettingsWindow&) = delete;

    void makeKeyAndOrderFront();

  private:
    template <typename T>
    void observe(Published<T>& property);
    void rebuildSoon();

    MainQueue& queue_;
    SettingsView view_;
    std::shared_ptr<Window> window_;
    std::shared_ptr<bool> isRebuildQueued_ = std::make_shared<bool>(false);
    std::vector<Subscription> subscriptions_;
};

}  // namespace kovra
