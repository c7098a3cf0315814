#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/app/settings/SettingsView.h"
#include "BLE_kovra/core/Published.h"

namespace kovra {

class MainQueue;
class Window;
class WindowHost;

// The settings window. Closing it only hides it.
//
// While the window is visible, a change of the state rebuilds its content one queue turn later. Several changes in one
// turn cause one rebuild. The content of a hidden window is rebuilt when the window is shown.
class SettingsWindow {
  public:
    // Does not show the window yet. The references must outlive this object.
    SettingsWindow(WindowHost& windows, MainQueue& queue, AppState& state, const L10n& texts);
    SettingsWindow(const SettingsWindow&) = delete;
    SettingsWindow& operator=(const SettingsWindow&) = delete;

    // The function is called from the queue after each makeKeyAndOrderFront(), once the user sees the window.
    void setOnShown(std::function<void()> onShown);
    bool isVisible() const;
    // Shows the text of this key above the footer from the next opening on; an empty key removes it.
    void setAdvice(std::string key) { view_.setAdvice(std::move(key)); }
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
