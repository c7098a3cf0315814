#pragma once

#import <AppKit/AppKit.h>

#include "BLE_kovra/platform/Application.h"
#include "BLE_kovra/platform/macos/loop/EventQueue.h"

@class KovraApplicationDelegate;

namespace kovra {

class DispatchMainQueue;

// The application on AppKit. There is one per process.
//
// terminate() ends the process: AppKit notifies the delegate and never returns. The delegate is also notified when an
// uncaught exception ends the program.
class AppKitApplication : public Application, public EventQueue {
  public:
    explicit AppKitApplication(DispatchMainQueue& queue);

    void run(ApplicationDelegate& delegate) override;
    void setActivationPolicy(ActivationPolicy policy) override;
    void activateIgnoringOtherApps() override;
    void terminate() override;
    void beep() override;

    // Notifies the delegate that the user has started the program again.
    void reopen();

    void sendNextEvent() override;
    void wake() override;

  private:
    DispatchMainQueue& queue_;
    NSApplication* application_;
    KovraApplicationDelegate* delegate_ = nil;  // AppKit does not retain it
};

}  // namespace kovra
