#include "BLE_kovra/platform/macos/hid/IOKitHIDManager.h"

#include <IOKit/hid/IOHIDKeys.h>
#include <IOKit/hid/IOHIDManager.h>
#include <dispatch/dispatch.h>

#include <utility>

#include "BLE_kovra/platform/macos/hid/IOKitHIDDevice.h"

namespace kovra {

// The system's manager and the callbacks that it calls. After end() the callbacks are not called any more.
class IOKitHIDManager::Delivery {
  public:
    Delivery() : manager_(IOHIDManagerCreate(kCFAllocatorDefault, kIOHIDOptionsTypeNone)) {
        IOHIDManagerSetDeviceMatching(manager_.get(), nullptr);
        IOHIDManagerRegisterDeviceMatchingCallback(manager_.get(), deliver<&Delivery::attached>, this);
        IOHIDManagerRegisterDeviceRemovalCallback(manager_.get(), deliver<&Delivery::removed>, this);
    }

    void begin() {
        IOHIDManagerScheduleWithRunLoop(manager_.get(), CFRunLoopGetMain(), kCFRunLoopCommonModes);
        static_cast<void>(IOHIDManagerOpen(manager_.get(), kIOHIDOptionsTypeNone));
    }

    static void end(std::unique_ptr<Delivery> delivery) {
        delivery->attached = nullptr;
        delivery->removed = nullptr;
        // The system's manager must not lose its last reference while it runs a callback, so destroy this object later.
        if (delivery->isCalling_) {
            dispatch_async_f(dispatch_get_main_queue(), delivery.release(),
                             [](void* context) { delete static_cast<Delivery*>(context); });
        }
    }

    Callback attached;
    Callback removed;

  private:
    template <Callback Delivery::* which>
    static void deliver(void* context, IOReturn, void*, IOHIDDeviceRef reference) noexcept {
        if (context == nullptr) return;
        auto& delivery = *static_cast<Delivery*>(context);
        const Callback callback = delivery.*which;  // a copy: the callback may replace or clear the stored one
        if (!callback) return;
        const IOKitHIDDevice device(reference);
        const bool wasCalling = std::exchange(delivery.isCalling_, true);
        callback(device);
        delivery.isCalling_ = wasCalling;
    }

    CFHandle<IOHIDManagerRef> manager_;
    bool isCalling_ = false;
};

IOKitHIDManager::IOKitHIDManager() : delivery_(std::make_unique<Delivery>()) {}

IOKitHIDManager::~IOKitHIDManager() { Delivery::end(std::move(delivery_)); }

void IOKitHIDManager::registerMatchingCallback(Callback attached) { delivery_->attached = std::move(attached); }

void IOKitHIDManager::registerRemovalCallback(Callback removed) { delivery_->removed = std::move(removed); }

void IOKitHIDManager::open() { delivery_->begin(); }

}  // namespace kovra
