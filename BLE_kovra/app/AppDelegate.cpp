#include "BLE_kovra/app/AppDelegate.h"

#include <cstdlib>
#include <utility>

#include "BLE_kovra/app/AboutBox.h"
#include "BLE_kovra/app/FactsOfState.h"
#include "BLE_kovra/app/StatusIcon.h"
#include "BLE_kovra/app/StatusMenu.h"
#include "BLE_kovra/app/settings/SettingsWindow.h"
#include "BLE_kovra/core/HelperController.h"
#include "BLE_kovra/core/MutingDecision.h"
#include "BLE_kovra/devices/HIDMonitor.h"
#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/platform/LoginService.h"
#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/Platform.h"
#include "BLE_kovra/platform/PreferencesStore.h"
#include "BLE_kovra/platform/StatusBar.h"
#include "BLE_kovra/system/DriverSetup.h"
#include "BLE_kovra/system/GlobalHotkey.h"
#include "BLE_kovra/system/LoginItem.h"

namespace kovra {

namespace {

MenuItemState checkMark(bool isOn) { return isOn ? MenuItemState::on : MenuItemState::off; }

}  // namespace

std::shared_ptr<AppDelegate> AppDelegate::create(const Platform& platform, AppState& state, HelperController& helper,
                                                 GlobalHotkey& hotkey, const L10n& texts) {
    return std::shared_ptr<AppDelegate>(new AppDelegate(platform, state, helper, hotkey, texts));
}

AppDelegate::AppDelegate(const Platform& platform, AppState& state, HelperController& helper, GlobalHotkey& hotkey,
                         const L10n& texts)
    : platform_(platform),
      state_(state),
      helper_(helper),
      hotkey_(hotkey),
      texts_(texts),
      monitor_(HIDMonitor::create(platform.hid, platform.mainQueue, platform.locale, texts)),
      driver_(platform.processes, platform.fileSystem, platform.log),
      hotKeyRequest_(hotkey, state.defaults) {}

AppDelegate::~AppDelegate() = default;

// The order of the nine steps is part of what the program promises ("Start-up" in docs/architecture.md).
void AppDelegate::applicationDidFinishLaunching() {
    // 1. No entry in the task bar.
    platform_.application.setActivationPolicy(ActivationPolicy::accessory);

    // 2. The status item with its menu.
    setupStatusItem();

    // 3. The device monitor. It reports devices from the event loop, which does not run before step 9. Devices that are
    // attached already are reported in the same way.
    monitor_->onDevicesChanged = [weak = weak_from_this()](std::vector<HIDDeviceInfo> devices) {
        const auto self = weak.lock();
        if (!self) return;
        self->enqueue([list = std::move(devices)](AppState& state) mutable { state.devices.set(std::move(list)); });
    };
    monitor_->start();

    // 4 to 6. The subscriptions to the user's choices. They do not save the values that AppState loaded from the
    // preferences.
    saveOnChange(state_.selectedIDs, [](AppState& state) { state.saveSelected(); });
    saveOnChange(state_.isEnabled, [](AppState& state) { state.defaults.set(state.kEnabled, state.isEnabled.get()); });
    saveOnChange(state_.mode, [](AppState& state) { state.saveMode(); });

    // 7. The hot key. The menu follows what the desktop says about it.
    hotkey_.onTrigger = hotKeyHandler();
    hotkey_.onStateChange = [weak = weak_from_this(), &queue = platform_.mainQueue] {
        queue.async([weak] {
            const auto self = weak.lock();
            if (!self) return;
            self->showMenu();
            self->hotKeyRequest_.stateChanged();
        });
    };
    hotkey_.description = texts_.s("block");
    hotkey_.registerHotKey();

    // 8. The first decision. It depends only on the saved choices, because no device has been reported yet.
    evaluate();

    // 9. The alert about the driver, unless the driver is active. This step is the last one because it waits for the
    // user's answer. The services of the earlier steps keep working meanwhile. So the user may have opened the alert
    // from the menu by now.
    const bool isActive = driver_.isExtensionActive();
    if (!isActive && !hasExplainedDriver_ && !hasTerminated_)
        DriverSetup::showExplanation(platform_.application, platform_.alerts, driver_, texts_);
}

void AppDelegate::applicationDidReopen() { openSettings(); }

void AppDelegate::applicationDidResume() {
    enqueue([](AppState&) {});
}

void AppDelegate::applicationShouldPerform(ApplicationAction action) {
    if (hasTerminated_) return;
    switch (action) {
        case ApplicationAction::toggle:
            mustAnnounce_ = true;
            return toggleEnabled();
        case ApplicationAction::on:
            return state_.isEnabled.set(true);
        case ApplicationAction::off:
            return state_.isEnabled.set(false);
        case ApplicationAction::settings:
            return openSettings();
        case ApplicationAction::hotKey:
            return requestHotKey();
        case ApplicationAction::quit:
            return quit();
    }
}

ApplicationFacts AppDelegate::facts() const { return factsOf(state_, *monitor_, helper_); }

void AppDelegate::applicationWillTerminate() {
    hasTerminated_ = true;

    // Unmute the trackpad first, whatever the mode and the switch are.
    helper_.set(false);

    hotkey_.unregister();

    // The blocks that would save the latest choices do not run any more.
    while (!unsaved_.empty()) saveNext();
}

void AppDelegate::evaluate() {
    // The work that enqueue() runs may quit the application. The evaluate() after that work must not write the flag
    // again.
    if (hasTerminated_) return;
    const bool mute =
        decideMuting(state_.mode.get(), state_.isEnabled.get(), [this] { return state_.anySelectedConnected(); });
    helper_.set(mute);
    state_.blocking.set(mute);
    refreshUI();
    if (std::exchange(mustAnnounce_, false)) requireStatusItem().announce(statusText(mute));
}

std::function<void()> AppDelegate::hotKeyHandler() {
    return [weak = weak_from_this(), &platform = platform_] {
        platform.mainQueue.async([weak, &platform] {
            if (const auto self = weak.lock()) {
                self->mustAnnounce_ = true;
                self->state_.isEnabled.set(!self->state_.isEnabled.get());
            }
            platform.application.beep();
        });
    };
}

void AppDelegate::setupStatusItem() {
    statusItem_ = platform_.statusBar.statusItem(StatusBar::variableLength);
    showIcon(false);
    showMenu();
}

void AppDelegate::showMenu() {
    const StatusMenuActions actions{.toggleEnabled = action(&AppDelegate::toggleEnabled),
                                    .requestHotKey = action(&AppDelegate::requestHotKey),
                                    .openSettings = action(&AppDelegate::openSettings),
                                    .toggleLaunchAtLogin = action(&AppDelegate::toggleLaunchAtLogin),
                                    .activateDriver = action(&AppDelegate::activateDriver),
                                    .showAbout = action(&AppDelegate::showAbout),
                                    .quit = action(&AppDelegate::quit)};
    requireStatusItem().setMenu(
        makeStatusMenu(texts_, actions, checkMark(state_.isEnabled.get()), launchAtLoginState(), hotkey_.state()));
}

void AppDelegate::refreshUI() {
    StatusItem& item = requireStatusItem();
    item.setState(StatusMenuTag::enabled, checkMark(state_.isEnabled.get()));
    item.setState(StatusMenuTag::launchAtLogin, launchAtLoginState());
    showIcon(state_.blocking.get());
}

void AppDelegate::toggleEnabled() { state_.isEnabled.set(!state_.isEnabled.get()); }

void AppDelegate::toggleLaunchAtLogin() {
    LoginItem::toggle(platform_.loginService, platform_.log);
    requireStatusItem().setState(StatusMenuTag::launchAtLogin, launchAtLoginState());
}

void AppDelegate::openSettings() {
    if (!settingsWindow_) {
        settingsWindow_ = std::make_unique<SettingsWindow>(platform_.windows, platform_.mainQueue, state_, texts_);
        settingsWindow_->setOnShown(action(&AppDelegate::settingsShown));
    }
    if (!settingsWindow_->isVisible()) settingsWindow_->setAdvice(nextAdvice());
    platform_.application.activateIgnoringOtherApps();
    settingsWindow_->makeKeyAndOrderFront();
}

// The desktop's dialog for the hot key comes in front of the window, since the window is there before it.
void AppDelegate::settingsShown() {
    if (!hasTerminated_) hotKeyRequest_.settingsOpened();
}

void AppDelegate::activateDriver() {
    hasExplainedDriver_ = true;
    DriverSetup::showExplanation(platform_.application, platform_.alerts, driver_, texts_);
}

void AppDelegate::requestHotKey() { hotKeyRequest_.make(); }

void AppDelegate::showAbout() {
    runAboutBox(platform_.bundle, platform_.application, platform_.alerts, platform_.workspace, texts_);
}

void AppDelegate::quit() { platform_.application.terminate(); }

void AppDelegate::enqueue(Work work) {
    platform_.mainQueue.async([weak = weak_from_this(), work = std::move(work)] {
        if (const auto self = weak.lock()) work(self->state_);
        // The work may have destroyed the delegate.
        if (const auto self = weak.lock()) self->evaluate();
    });
}

template <typename T>
void AppDelegate::saveOnChange(Published<T>& property, Work save) {
    const auto handler = [weak = weak_from_this(), save = std::move(save)](const T&) {
        const auto self = weak.lock();
        if (!self) return;
        self->unsaved_.push_back(save);
        self->enqueue([weak](AppState&) {
            if (const auto changed = weak.lock()) changed->saveNext();
        });
    };
    cancellables_.push_back(property.subscribe(handler, CurrentValue::drop));
}

void AppDelegate::saveNext() {
    const Work save = std::move(unsaved_.front());
    unsaved_.erase(unsaved_.begin());
    save(state_);
}

std::function<void()> AppDelegate::action(void (AppDelegate::*work)()) {
    return [weak = weak_from_this(), work] {
        if (const auto self = weak.lock()) ((*self).*work)();
    };
}

MenuItemState AppDelegate::launchAtLoginState() const {
    return checkMark(platform_.loginService.status() == LoginStatus::enabled);
}

void AppDelegate::showIcon(bool muted) const {
    StatusBarButton* button = requireStatusItem().button();
    if (button == nullptr) return;
    button->setImage(makeIcon(muted));
    if (button->hasImage()) button->setImageIsTemplate(true);
    button->setToolTip(statusText(muted));
}

std::string AppDelegate::statusText(bool muted) const { return texts_.s(muted ? "status.blocked" : "status.active"); }

std::string AppDelegate::nextAdvice() const {
    if (state_.defaults.boolean(state_.kAdviceShown)) return {};
    std::string advice = platform_.statusBar.advice();
    if (!advice.empty()) state_.defaults.set(state_.kAdviceShown, true);
    return advice;
}

StatusItem& AppDelegate::requireStatusItem() const {
    if (!statusItem_) std::abort();
    return *statusItem_;
}

}  // namespace kovra
