#pragma once

#include <cstdint>
#include <memory>

#include "BLE_kovra/platform/Window.h"

namespace kovra {

class ActivationToken;
class MainQueue;
class WindowProcess;
class Workspace;

// Shows the application's window in the window process. There is one window at a time.
//
// This process keeps the contents of the window and sends them at most once per turn of the queue. So the window is the
// same after a restart of the window process. If the process dies, the window counts as closed. The process reports
// user input with the path of the control. The change is applied to the current view, and the reply contains the
// result. This process opens the links itself, with the destination from its own view.
class ProcessWindowHost : public WindowHost {
  public:
    ProcessWindowHost(MainQueue& queue, WindowProcess& process, ActivationToken& token, Workspace& workspace)
        : queue_(queue), process_(process), token_(token), workspace_(workspace) {}

    std::unique_ptr<Window> makeWindow(View content) override;

  private:
    class ProcessWindow;

    MainQueue& queue_;
    WindowProcess& process_;
    ActivationToken& token_;
    Workspace& workspace_;
    std::uint64_t fronts_ = 0;  // how many times a window was brought to the front
};

}  // namespace kovra
