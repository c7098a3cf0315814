#pragma once

#include <optional>
#include <utility>

#include "BLE_kovra/platform/Application.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"

namespace kovra {

class SdEventLoop;

// The resident program as an application: it runs for as long as its event loop.
//
// run() always calls the delegate's applicationWillTerminate() before it ends, after a quit as well as after an error
// in the loop.
class SdEventApplication : public Application {
  public:
    explicit SdEventApplication(SdEventLoop& loop) : loop_(loop) {}

    void run(ApplicationDelegate& delegate) override;
    // Does nothing: the resident program has no windows, and so no entry in a task bar.
    void setActivationPolicy(ActivationPolicy policy) override;
    // Does nothing: on Linux each window comes to the front when it is shown.
    void activateIgnoringOtherApps() override {}
    void terminate() override;
    void beep() override;

    // Listeners are called once, when the launch has ended: its last step may have waited for the user's answer.
    using Launches = Listeners<>;
    [[nodiscard]] Launches::Token listenForLaunch(Launches::Listener listener) {
        return launches_.add(std::move(listener));
    }

    // Call this function when the user has started the program again while it is running, or has pressed the key for
    // the settings in one of its windows.
    void reopen();
    // Call this function when a refused write of the flag may succeed now.
    void resume();
    // Call this function when another program of the user asks for this action.
    void perform(ApplicationAction action);
    // Returns the facts of the delegate. Returns nullopt before run() and after terminate().
    std::optional<ApplicationFacts> facts() const;

  private:
    SdEventLoop& loop_;
    ApplicationDelegate* delegate_ = nullptr;
    Launches launches_;
};

}  // namespace kovra
