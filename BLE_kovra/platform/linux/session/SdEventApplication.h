#pragma once

#include "BLE_kovra/platform/Application.h"

namespace kovra {

class SdEventLoop;

// The resident program as an application: its life is the event loop's.
//
// Every way out of run() passes through the delegate's applicationWillTerminate: a quit, and an error that ends the
// loop too.
class SdEventApplication : public Application {
  public:
    explicit SdEventApplication(SdEventLoop& loop) : loop_(loop) {}

    void run(ApplicationDelegate& delegate) override;
    // Nothing to do: a program without windows has no entry in any task bar.
    void setActivationPolicy(ActivationPolicy policy) override;
    // Nothing to do here: on Linux no application comes to the front but its windows, each as it is shown.
    void activateIgnoringOtherApps() override {}
    void terminate() override;
    void beep() override;

    // The user has started the program while it runs.
    void reopen();
    // What was refused may succeed now.
    void resume();

  private:
    SdEventLoop& loop_;
    ApplicationDelegate* delegate_ = nullptr;
};

}  // namespace kovra
