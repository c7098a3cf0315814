#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "BLE_kovra/core/AppState.h"
#include "BLE_kovra/platform/Application.h"

namespace kovra {

class HelperController;
class HIDMonitor;
class L10n;
struct Platform;

// The program's spine: starts everything in order, joins every change of the state to its saving and to the muting
// decision, and gives the trackpad back at the end.
//
// A handler of a change does nothing itself: it queues a block, since a change is announced before it is stored. The
// block finds the new value in place, saves it and decides again.
class AppDelegate : public ApplicationDelegate, public std::enable_shared_from_this<AppDelegate> {
  public:
    static std::shared_ptr<AppDelegate> create(const Platform& platform, AppState& state, HelperController& helper,
                                               const L10n& texts);
    ~AppDelegate() override;

    void applicationDidFinishLaunching() override;
    void applicationWillTerminate() override;

    // Decides whether to mute, tells the helper and keeps the answer. Nothing is written while the answer stays. Does
    // nothing once the application has terminated: "off" is then the last word.
    void evaluate();

    // What a press of the hot key does: flips the switch and beeps, one queue turn later. The flip is saved and decided
    // on like any other. Outlives the delegate; then it only beeps.
    std::function<void()> hotKeyHandler();

    // Menu action.
    void quit();

  private:
    AppDelegate(const Platform& platform, AppState& state, HelperController& helper, const L10n& texts);

    // Queues `work` followed by evaluate(); neither happens if the delegate is gone by then, nor does evaluate() if it
    // goes during the work.
    void enqueue(std::function<void(AppDelegate&)> work);
    // A subscriber that ignores the value announced and queues `work`.
    template <typename T>
    [[nodiscard]] Subscription onChange(Published<T>& property, void (AppDelegate::*work)());

    void saveSelected();
    void saveEnabled();
    void saveMode();

    const Platform& platform_;
    AppState& state_;
    HelperController& helper_;
    std::shared_ptr<HIDMonitor> monitor_;
    std::vector<Subscription> cancellables_;
    bool hasTerminated_ = false;
};

}  // namespace kovra
