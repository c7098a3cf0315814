#pragma once

#include <memory>
#include <optional>
#include <string>

#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/linux/session/SdEventApplication.h"
#include "BLE_kovra/platform/linux/start/FirstMinute.h"
#include "BLE_kovra/platform/linux/start/LaunchFeedback.h"
#include "BLE_kovra/platform/linux/start/WaylandLaunch.h"
#include "BLE_kovra/platform/linux/start/XEmbedTrayQuery.h"
#include "BLE_kovra/platform/linux/start/XLaunch.h"
#include "BLE_kovra/platform/linux/tray/StatusNotifierWatcher.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"

namespace kovra {

class ActivationToken;

// What follows a start by the user, as from the desktop's menu: the desktop's launch feedback is ended, and the
// settings window is opened if nothing else shows that the program runs (see FirstMinute).
//
// The feedback ends when a tray has taken the icon, or when a window or an alert is shown, or after the time
// LaunchFeedback::longest. On Wayland a window ends the feedback itself, by the token with which it comes to the front.
// Since the alert of the launch may need the token, a tray ends the feedback there only after the launch. Without a
// window the token is not used.
//
// A click on the icon or its menu may come with a token too. GNOME's AppIndicator extension requests it as if a program
// were started, so there the pointer becomes busy. This feedback ends soon after the click, unless a window has
// used the token.
//
// A start is one by the user if the desktop has passed a token or a startup ID. Otherwise, as at login, nothing is done
// and only clicks are listened to.
class UserStart {
  public:
    struct Desk {
        SdEventLoop& loop;
        SdEventApplication& application;
        XConnection* x;  // null on Wayland, and without a display
        StatusNotifierWatcher& watcher;
        WindowProcess& window;
        ActivationToken& token;
    };

    // `token` is that of this process's own start; it may be empty. The work begins in the next turn of the queue,
    // after the icon was registered.
    UserStart(const Desk& desk, const std::string& token);
    UserStart(const UserStart&) = delete;
    UserStart& operator=(const UserStart&) = delete;
    // Ends all feedback. If there is any, waits for the desktop for up to Deadline::longest.
    ~UserStart();

    // Call this function when the user has started the program again and the settings window opens. The token may be
    // empty.
    void startedAgain(const std::string& token);

    // Ends the feedback for this token at once. Call this function when the user has started something that opens no
    // window. The token may be empty. A longer one than ActivationToken::longest, which no desktop issues, is ignored.
    void endFeedback(const std::string& token);

  private:
    void begin(const std::string& token);
    void clicked(const std::string& token);
    void launchEnded();
    void trayChanged();
    void lookForTray();
    void shown();
    bool isNothingChosen() const;
    bool showsWindowOrAlert() const;
    void releaseIfOver();

    const Desk desk_;
    LaunchFeedback feedback_;
    LaunchFeedback clicks_;
    std::optional<XLaunch> xLaunch_;
    std::optional<WaylandLaunch> waylandLaunch_;
    std::unique_ptr<FirstMinute> first_;
    std::unique_ptr<XEmbedTrayQuery> query_;
    bool hasLaunched_ = false;
    SdEventApplication::Launches::Token launch_;
    StatusNotifierWatcher::Icons::Token icon_;
    WindowProcess::Showings::Token showing_;
    Lifetime lifetime_;
};

}  // namespace kovra
