#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/app/HotKeyRequest.h"
#include "BLE_kovra/core/AppState.h"
#include "BLE_kovra/platform/Application.h"
#include "BLE_kovra/platform/Menu.h"
#include "BLE_kovra/system/DriverActivator.h"

namespace kovra {

class GlobalHotkey;
class HelperController;
class HIDMonitor;
class L10n;
class SettingsWindow;
class StatusItem;
struct Platform;

// The application's delegate. It starts the services in a fixed order, saves each change of the user's choices, and
// decides whether to mute. When the application terminates, it unmutes the trackpad.
//
// AppState announces a changed choice before it stores the choice (see Published). So the handler of the announcement
// only queues a block. The block saves the stored choice and decides again.
class AppDelegate : public ApplicationDelegate, public std::enable_shared_from_this<AppDelegate> {
  public:
    static std::shared_ptr<AppDelegate> create(const Platform& platform, AppState& state, HelperController& helper,
                                               GlobalHotkey& hotkey, const L10n& texts);
    ~AppDelegate() override;

    void applicationDidFinishLaunching() override;
    // Opens the settings window. On a desktop without a tray, this is how the user reaches the settings.
    void applicationDidReopen() override;
    // Queues a call of evaluate(), which repeats a failed write of the flag.
    void applicationDidResume() override;
    // Does what the corresponding menu item does; `on` and `off` set the switch instead of toggling it. Desktops can
    // give `toggle` a key, so the new status is announced as after the hot key. Does nothing after
    // applicationWillTerminate().
    void applicationShouldPerform(ApplicationAction action) override;
    ApplicationFacts facts() const override;
    void applicationWillTerminate() override;

    // Decides whether to mute, then updates the flag, `AppState::blocking` and the status item. The flag is not written
    // again if its last write succeeded and had the same decision. Does nothing after applicationWillTerminate(), so
    // that the flag stays "off".
    void evaluate();

    // Creates the status item with its menu. The icon has no slash, which would mean "muted", until the first
    // decision.
    void setupStatusItem();
    void showMenu();
    // Updates the check marks of the switch and of launch at login, the icon and its tool tip. The icon shows the last
    // decision, not the switch. Aborts if setupStatusItem() was not called before.
    void refreshUI();

    // The actions of the status item's menu.
    void toggleEnabled();
    // Toggles launch at login, then sets the check mark from the status that the system reports. Aborts if
    // setupStatusItem() was not called before.
    void toggleLaunchAtLogin();
    // Shows the settings window in front of other windows. The first call creates the window.
    void openSettings();
    // Shows an alert that explains the driver and offers to activate it, even if the driver is active.
    void activateDriver();
    // Has the desktop ask the user for the hot key, on desktops that do so.
    void requestHotKey();
    void showAbout();
    void quit();

  private:
    AppDelegate(const Platform& platform, AppState& state, HelperController& helper, GlobalHotkey& hotkey,
                const L10n& texts);

    using Work = std::function<void(AppState&)>;

    // Queues a block that calls `work` and then evaluate(). Each call is skipped if the delegate has been destroyed by
    // then.
    void enqueue(Work work);
    // Queues a block that calls `save` and then evaluate(), each time the property announces a value. The announced
    // value is ignored, because `save` reads the stored one.
    template <typename T>
    void saveOnChange(Published<T>& property, Work save);
    // Calls the first of `unsaved_`, and removes it.
    void saveNext();

    // Returns a handler that toggles the switch and beeps, one queue turn after the press. It announces the new status
    // after the decision. After the delegate has been destroyed, the handler only beeps.
    std::function<void()> hotKeyHandler();
    // Returns a menu action that calls `work` while the delegate exists, and does nothing afterwards.
    std::function<void()> action(void (AppDelegate::*work)());
    // The user sees the settings window.
    void settingsShown();
    MenuItemState launchAtLoginState() const;
    void showIcon(bool muted) const;
    std::string statusText(bool muted) const;
    // Returns the key of the advice that the settings window shows until it is closed, or an empty text. An advice is
    // returned once, ever.
    std::string nextAdvice() const;
    // Returns the status item. Aborts if setupStatusItem() was not called before.
    StatusItem& requireStatusItem() const;

    const Platform& platform_;
    std::unique_ptr<StatusItem> statusItem_;
    AppState& state_;
    HelperController& helper_;
    GlobalHotkey& hotkey_;
    const L10n& texts_;
    std::shared_ptr<HIDMonitor> monitor_;
    DriverActivator driver_;
    HotKeyRequest hotKeyRequest_;
    std::unique_ptr<SettingsWindow> settingsWindow_;
    std::vector<Subscription> cancellables_;
    std::vector<Work> unsaved_;        // saves of changes whose blocks have not run yet, the earliest first
    bool hasExplainedDriver_ = false;  // the user has opened the alert about the driver
    bool hasTerminated_ = false;
    bool mustAnnounce_ = false;  // a key has toggled the switch, and the next decision is to be announced
};

}  // namespace kovra
