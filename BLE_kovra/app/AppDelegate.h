#pragma once

#include <functional>
#include <memory>
#include <vector>

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

// The program's spine: starts everything in order, joins every change of the state to its saving and to the muting
// decision, and gives the trackpad back at the end.
//
// A handler of a change does nothing itself: it queues a block, since a change is announced before it is stored. The
// block finds the new value in place, saves it and decides again.
class AppDelegate : public ApplicationDelegate, public std::enable_shared_from_this<AppDelegate> {
  public:
    static std::shared_ptr<AppDelegate> create(const Platform& platform, AppState& state, HelperController& helper,
                                               GlobalHotkey& hotkey, const L10n& texts);
    ~AppDelegate() override;

    void applicationDidFinishLaunching() override;
    // Opens the settings: a way in that needs no tray.
    void applicationDidReopen() override;
    // Decides once more, one queue turn later: a flag that could not be written is written then.
    void applicationDidResume() override;
    void applicationWillTerminate() override;

    // Decides whether to mute, tells the helper, keeps the answer and shows it. Nothing is written while the answer
    // stays. Does nothing once the application has terminated: "off" is then the last word.
    void evaluate();

    // Makes the status item with its menu and the plain icon, whatever the state. Comes before everything that shows a
    // change.
    void setupStatusItem();
    // Brings both check marks and the icon up to date. The icon shows the decision to mute, not the switch. Without a
    // status item it stops the process.
    void refreshUI();

    // Menu actions.
    void toggleEnabled();
    // Shows what has come of it, as the system has it then. Without a status item it stops the process.
    void toggleLaunchAtLogin();
    // Brings the one settings window to the front, made at the first call.
    void openSettings();
    // The explanation, whether the driver is active or not.
    void activateDriver();
    void showAbout();
    void quit();

  private:
    AppDelegate(const Platform& platform, AppState& state, HelperController& helper, GlobalHotkey& hotkey,
                const L10n& texts);

    using Work = std::function<void(AppState&)>;

    // Queues `work` and then evaluate(). Each is skipped if the delegate has been destroyed by then.
    void enqueue(Work work);
    // Queues `save` at each change of the property, ignoring the announced value.
    template <typename T>
    void saveOnChange(Published<T>& property, Work save);

    // What a press of the hot key does: flips the switch and beeps, one queue turn later. The flip is saved and decided
    // on like any other. Outlives the delegate; then it only beeps.
    std::function<void()> hotKeyHandler();
    // A menu action: `work` on the delegate, if there still is one.
    std::function<void()> action(void (AppDelegate::*work)());
    MenuItemState launchAtLoginState() const;
    void showIcon(bool muted) const;
    // Stops the process where there is none.
    StatusItem& requireStatusItem() const;

    const Platform& platform_;
    std::unique_ptr<StatusItem> statusItem_;
    AppState& state_;
    HelperController& helper_;
    GlobalHotkey& hotkey_;
    const L10n& texts_;
    std::shared_ptr<HIDMonitor> monitor_;
    DriverActivator driver_;
    std::unique_ptr<SettingsWindow> settingsWindow_;
    std::vector<Subscription> cancellables_;
    bool hasTerminated_ = false;
};

}  // namespace kovra
