#pragma once

#import <AppKit/AppKit.h>

#include "BLE_kovra/platform/Application.h"

@class KovraApplicationDelegate;

namespace kovra {

class DispatchMainQueue;

// The application as AppKit has it. One a process.
//
// terminate() ends the process: AppKit tells the delegate and never returns. Where the program ends because nobody
// caught an exception, the delegate is told of the end as well.
class AppKitApplication : public Application {
  public:
    explicit AppKitApplication(DispatchMainQueue& queue);

    void run(ApplicationDelegate& delegate) override;
    void setActivationPolicy(ActivationPolicy policy) override;
    void activateIgnoringOtherApps() override;
    void terminate() override;
    void beep() override;

  private:
    DispatchMainQueue& queue_;
    NSApplication* application_;
    KovraApplicationDelegate* delegate_ = nil;  // AppKit does not keep it alive
};

}  // namespace kovra
