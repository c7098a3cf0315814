#pragma once

namespace kovra {

class ApplicationDelegate;
class DispatchMainQueue;

// Notifies the delegate of the end of the process, once, however the process ends: by the application's terminate(), by
// exit(), which AppKit calls when it loses the window server, or by an uncaught exception of any thread. A signal that
// cannot be caught notifies nobody.
class ApplicationEnd {
  public:
    // Call this function once, on the main thread. `queue` stops before the delegate is notified. The delegate, and all
    // that it uses, must exist until then. So what exit() destroys must have been created before this call.
    static void expect(ApplicationDelegate& delegate, DispatchMainQueue& queue);

    // Returns the delegate from expect() to the notification, and null otherwise.
    static ApplicationDelegate* delegate();

    // Notifies the delegate, unless it has been notified.
    static void notify();
};

}  // namespace kovra
