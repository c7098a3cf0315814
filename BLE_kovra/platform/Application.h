#pragma once

#include <string>
#include <vector>

namespace kovra {

enum class ActivationPolicy { regular = 0, accessory = 1, prohibited = 2 };

// What another program of the same user may ask the application to do.
enum class ApplicationAction {
    toggle,    // switch muting over
    on,        // switch muting on
    off,       // switch muting off
    settings,  // show the settings window
    hotKey,    // have the desktop ask the user for the hot key, on desktops that do so
    quit,
};

// What the application knows about its own state, for a program that explains that state to the user.
struct ApplicationFacts {
    enum class Presence {
        connected,
        inGrace,  // removed so recently that it still counts as connected
        away,
    };
    struct ChosenDevice {
        std::string name;
        Presence presence = Presence::away;
        bool operator==(const ChosenDevice&) const = default;
    };

    bool isEnabled = true;                  // the switch
    std::string mode = {};                  // the raw value, "always" or "onDevice"
    bool isMuting = false;                  // the last decision
    std::string lastWritten = {};           // the last word that was written into the flag; empty if there was none
    std::vector<ChosenDevice> chosen = {};  // in the order of the settings window, then those not seen since the start

    bool operator==(const ApplicationFacts&) const = default;
};

// The receiver of the application's lifecycle events.
class ApplicationDelegate {
  public:
    virtual ~ApplicationDelegate() = default;
    virtual void applicationDidFinishLaunching() = 0;
    // Called when the user starts the program again while it is running, or requests the settings with a key in one of
    // its windows or, on macOS, in its main menu.
    virtual void applicationDidReopen() = 0;
    // Called when a write of the flag that failed before may succeed. The reason is that the session has become active
    // again, the machine has resumed from sleep, or the helper has handed the flag over to the user.
    virtual void applicationDidResume() = 0;
    // Called when another program of the same user asks for an action.
    virtual void applicationShouldPerform(ApplicationAction action) = 0;
    // Returns the present facts, and changes nothing.
    virtual ApplicationFacts facts() const = 0;
    virtual void applicationWillTerminate() = 0;
};

// The running application: its event loop, its end, and its place on the desktop.
class Application {
  public:
    virtual ~Application() = default;

    // Calls the delegate's applicationDidFinishLaunching(), then runs the event loop until terminate(). A signal or the
    // end of the session ends the application in the same way.
    virtual void run(ApplicationDelegate& delegate) = 0;

    // With `accessory` the application has no entry in the task bar, but it can have a status item and show windows.
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;

    // Brings the application to the front if the desktop permits it, so that the next window that it shows has the
    // keyboard focus.
    virtual void activateIgnoringOtherApps() = 0;

    // Calls the delegate's applicationWillTerminate() before it returns. From then on no queued block runs, no process
    // starts and no alert opens. Afterwards run() returns, or the process ends inside terminate(). So code after a call
    // of run() or terminate() does not always run. A second call of terminate() does nothing.
    virtual void terminate() = 0;

    // Plays the system's alert sound. Returns at once and reports no errors.
    virtual void beep() = 0;
};

}  // namespace kovra
