#pragma once

#include "BLE_kovra/platform/Window.h"

namespace kovra {

class MainQueue;
class Workspace;

// Shows windows with AppKit. After the user has used a control, the window resets the control to the value in its
// content. The reset is queued, so that it runs after the blocks that the control's own function has queued.
class AppKitWindowHost : public WindowHost {
  public:
    AppKitWindowHost(MainQueue& queue, Workspace& workspace) : queue_(queue), workspace_(workspace) {}

    std::unique_ptr<Window> makeWindow(View content) override;

  private:
    MainQueue& queue_;
    Workspace& workspace_;
};

}  // namespace kovra
