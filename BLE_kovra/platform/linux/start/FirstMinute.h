#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

// Decides whether a start by the user opens the settings window. It does if no tray takes the icon within the time
// `patience`, because the user would see nothing at all. A user who has chosen no device yet needs the window anyway.
// So for this user it opens as soon as the desktop has replied that it has no tray.
//
// The window opens once at most, not before the launch has ended, and not while an alert is open. The launch ends when
// the user has answered the alert of its last step. Only one timer runs, until the decision or until `patience` is
// over.
class FirstMinute {
  public:
    static constexpr std::chrono::seconds patience{5};

    struct Desk {
        // Asks for a call of trayTakesIcon() or trayIsMissing(), which may come before this function returns.
        std::function<void()> lookForTray;
        std::function<bool()> isNothingChosen;
        std::function<bool()> isAlertOpen;
        std::function<void()> openSettings;
    };

    FirstMinute(MainQueue& queue, Desk desk);
    ~FirstMinute();
    FirstMinute(const FirstMinute&) = delete;
    FirstMinute& operator=(const FirstMinute&) = delete;

    // A tray has the icon or is about to take it.
    void trayTakesIcon() { decide(); }
    // There is no tray at present.
    void trayIsMissing();
    void launchEnded();
    // Something else has opened the settings window.
    void settingsOpened() { decide(); }

    // Returns whether the decision has been made. All functions do nothing from then on.
    bool isDecided() const { return isDecided_; }

  private:
    void timeIsUp();
    void decide();

    const Desk desk_;
    std::unique_ptr<DelayedTask> timer_;  // null when it has expired or was cancelled
    bool isTrayMissing_ = false;
    bool hasLaunched_ = false;
    bool isDecided_ = false;
};

}  // namespace kovra
