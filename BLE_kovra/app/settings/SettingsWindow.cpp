#include "BLE_kovra/app/settings/SettingsWindow.h"

#include <functional>
#include <utility>

#include "BLE_kovra/core/AppState.h"
#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/Window.h"

namespace kovra {

SettingsWindow::SettingsWindow(WindowHost& windows, MainQueue& queue, AppState& state, const L10n& texts)
    : queue_(queue), view_(state, texts), window_(windows.makeWindow(view_.body())) {
    window_->setTitle("BLE-kovra");
    // The user cannot resize the window, since the width of its content is fixed.
    window_->setStyleMask(WindowStyle::titled | WindowStyle::closable | WindowStyle::miniaturizable);
    window_->setContentSize({440, 480});
    window_->setReleasedWhenClosed(false);
    window_->center();
    observe(state.devices);
    observe(state.selectedIDs);
    observe(state.isEnabled);
    observe(state.mode);
    observe(state.blocking);
}

void SettingsWindow::setOnShown(std::function<void()> onShown) { window_->setOnShown(std::move(onShown)); }

bool SettingsWindow::isVisible() const { return window_->isVisible(); }

void SettingsWindow::makeKeyAndOrderFront() {
    if (!window_->isVisible()) window_->setContent(view_.body());
    window_->makeKeyAndOrderFront();
}

template <typename T>
void SettingsWindow::observe(Published<T>& property) {
    subscriptions_.push_back(property.subscribe([this](const T&) { rebuildSoon(); }, CurrentValue::drop));
}

// A change is announced before it is stored, so the content is rebuilt one queue turn later.
void SettingsWindow::rebuildSoon() {
    if (*isRebuildQueued_ || !window_->isVisible()) return;
    *isRebuildQueued_ = true;
    queue_.async([weak = std::weak_ptr(window_), isQueued = isRebuildQueued_, view = view_] {
        *isQueued = false;
        const auto window = weak.lock();
        if (window && window->isVisible()) window->setContent(view.body());
    });
}

}  // namespace kovra
