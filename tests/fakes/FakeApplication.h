#pragma once

#include <functional>
#include <vector>

#include "BLE_kovra/platform/Application.h"

namespace kovra {

// An application without a desktop. run() notifies the delegate of the launch and returns to the test.
class FakeApplication : public Application {
  public:
    void run(ApplicationDelegate& delegate) override {
        delegate_ = &delegate;
        delegate.applicationDidFinishLaunching();
    }
    void setActivationPolicy(ActivationPolicy policy) override { policies.push_back(policy); }
    void activateIgnoringOtherApps() override { ++activations; }
    void terminate() override {
        if (terminated) return;
        terminated = true;
        if (onTerminating) onTerminating();
        if (delegate_ != nullptr) delegate_->applicationWillTerminate();
    }
    void beep() override { ++beeps; }

    // Notifies the delegate that an operation that failed may succeed now.
    void resume() {
        if (delegate_ != nullptr && !terminated) delegate_->applicationDidResume();
    }

    // Notifies the delegate that another program asks for an action.
    void perform(ApplicationAction action) {
        if (delegate_ != nullptr && !terminated) delegate_->applicationShouldPerform(action);
    }

    std::vector<ActivationPolicy> policies;
    std::function<void()> onTerminating;  // called at the end, so that a test can stop its queue
    bool terminated = false;
    int activations = 0;
    int beeps = 0;

  private:
    ApplicationDelegate* delegate_ = nullptr;
};

}  // namespace kovra
