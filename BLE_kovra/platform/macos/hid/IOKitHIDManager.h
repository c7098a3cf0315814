#pragma once

#include <memory>

#include "BLE_kovra/platform/HIDManager.h"

namespace kovra {

// Reports all HID devices of the machine. The system may ask the user to permit input monitoring, which this program
// does not do. It reports the devices even if the user refuses.
class IOKitHIDManager : public HIDManager {
  public:
    IOKitHIDManager();
    ~IOKitHIDManager() override;

    void registerMatchingCallback(Callback attached) override;
    void registerRemovalCallback(Callback removed) override;
    // Call open() at most once.
    void open() override;

  private:
    class Delivery;

    std::unique_ptr<Delivery> delivery_;
};

class IOKitHIDService : public HIDService {
  public:
    std::unique_ptr<HIDManager> createManager() override { return std::make_unique<IOKitHIDManager>(); }
};

}  // namespace kovra
