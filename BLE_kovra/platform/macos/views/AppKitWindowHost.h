#pragma once

#include "BLE_kovra/platform/Window.h"

namespace kovra {

class MainQueue;
class Workspace;

// Windows as AppKit has them. Once the user has used a control it shows what the content then has, and nothing else,
// after whatever the use has put on the queue.
class AppKitWindowHost : public WindowHost {
  public:
    AppKitWindowHost(MainQueue& queue, Workspace& workspace) : queue_(queue), workspace_(workspace) {}

    std::unique_ptr<Window> makeWindow(View content) override;

  private:
    MainQueue& queue_;
    Workspace& workspace_;
};

}  // namespace kovra
