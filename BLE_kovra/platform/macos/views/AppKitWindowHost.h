#pragma once

#include "BLE_kovra/platform/Window.h"

namespace kovra {

class MainQueue;
class Workspace;

// Windows on AppKit. After the user has used a control, the window shows its content again, so that the control shows
// the value of the content. This happens after the blocks that the control has queued.
class AppKitWindowHost : public WindowHost {
  public:
    AppKitWindowHost(MainQueue& queue, Workspace& workspace) : queue_(queue), workspace_(workspace) {}

    std::unique_ptr<Window> makeWindow(View content) override;

  private:
    MainQueue& queue_;
    Workspace& workspace_;
};

}  // namespace kovra
