#pragma once

#include <memory>

#include "BLE_kovra/platform/HIDManager.h"

namespace kovra {

// The HID devices of the machine, of every kind. They are told of whether or not the user allows us to listen to their
// input, which we do not.
class IOKitHIDManager : public HIDManager {
  public:
    IOKitHIDManager();
    ~IOKitHIDManager() override;

    void registerMatchingCallback(Callback attached) override;
    void registerRemovalCallback(Callback removed) override;
    // Once.
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
