#pragma once

#include <cstdint>
#include <memory>

#include "BLE_kovra/platform/Window.h"

namespace kovra {

class ActivationToken;
class MainQueue;
class WindowProcess;
class Workspace;

// The application's window, shown by the window process: one at a time.
//
// What it is lives here and the process is told, at most once a turn of the queue; so it is the same window in
// whichever process. A process that dies has closed it. What the user does to a control comes back by the control's
// path, is done to the view that is shown now, and is answered with what came of it. A link is followed here, to where
// the view has it.
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
    std::uint64_t fronts_ = 0;  // how often a window was brought to the front
};

}  // namespace kovra
