#pragma once

namespace kovra {

enum class ActivationPolicy { regular = 0, accessory = 1, prohibited = 2 };

// The receiver of the application's lifecycle events.
class ApplicationDelegate {
  public:
    virtual ~ApplicationDelegate() = default;
    virtual void applicationDidFinishLaunching() = 0;
    // The user started the program again while it was running.
    virtual void applicationDidReopen() = 0;
    // An operation that failed before may succeed now: the session is active again, the machine woke up, or the user
    // received the flag.
    virtual void applicationDidResume() = 0;
    virtual void applicationWillTerminate() = 0;
};

// The application as the desktop knows it.
class Application {
  public:
    virtual ~Application() = default;

    // Notifies the delegate that launching has finished, then runs the event loop until terminate(). A signal or the
    // end of the session ends the application in the same way.
    virtual void run(ApplicationDelegate& delegate) = 0;

    // With `accessory` the application has no entry in the task bar, but it can have a status item and show windows.
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;

    // Brings the application to the front if the desktop permits it, so that the next window that it shows has the
    // keyboard focus.
    virtual void activateIgnoringOtherApps() = 0;

    // Notifies the delegate before it returns. From then on no queued block runs, no process starts and no alert opens.
    // Afterwards run() returns, or the process ends inside terminate(). So code after a call of run() or terminate()
    // does not always run. A second call of terminate() does nothing.
    virtual void terminate() = 0;

    // Plays the system's alert sound. Returns at once and reports no errors.
    virtual void beep() = 0;
};

}  // namespace kovra
