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
// The resident program keeps the contents of the window and sends them at most once per turn of the queue. If the
// window process ends unexpectedly, the window counts as closed. When the window is opened again, it shows the same
// contents. The window process reports user input with the path of the control. The resident program applies the change
// to its current view and replies with the result. The resident program itself opens links, and takes the destination
// from its own view.
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
