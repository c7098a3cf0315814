#pragma once

namespace kovra {

enum class ActivationPolicy { regular = 0, accessory = 1, prohibited = 2 };

// Whoever wants to be told when the application begins and ends.
class ApplicationDelegate {
  public:
    virtual ~ApplicationDelegate() = default;
    virtual void applicationDidFinishLaunching() = 0;
    // The user started the program while it runs.
    virtual void applicationDidReopen() = 0;
    // What the system refused meanwhile may succeed now: the user is back at the machine, the machine is awake again,
    // or what was missing has come.
    virtual void applicationDidResume() = 0;
    virtual void applicationWillTerminate() = 0;
};

// The application as the desktop knows it.
class Application {
  public:
    virtual ~Application() = default;

    // Tells the delegate that launching has finished, then runs the event loop until terminate(). A quit that the
    // system asks for (a signal, the end of the session) takes the same way out as terminate().
    virtual void run(ApplicationDelegate& delegate) = 0;

    // accessory: present in the tray alone, no entry in the task bar, yet able to show windows.
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;

    // Comes to the front, whichever application is there: what it shows next has the keyboard.
    virtual void activateIgnoringOtherApps() = 0;

    // Tells the delegate at once, inside this call, that the application will terminate. From then on nothing queued
    // runs, no process starts, no alert opens. run() returns, or the process ends inside this call: nothing that has to
    // happen stands behind either. A second call does nothing.
    virtual void terminate() = 0;

    // The system's alert sound. Returns at once; silence is no error.
    virtual void beep() = 0;
};

}  // namespace kovra
