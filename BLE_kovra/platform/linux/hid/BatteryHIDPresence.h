#pragma once

#include <memory>
#include <set>
#include <string>

#include "BLE_kovra/platform/linux/hid/HIDPresence.h"
#include "BLE_kovra/platform/linux/hid/UdevEvents.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

// The presence of a mouse with a Logitech receiver, derived from the mouse's battery. The receiver's driver keeps the
// mouse's node for as long as mouse and receiver are paired. When the receiver reports the mouse as disconnected, the
// driver sets the battery's `online` to 0 and its `status` to "Unknown". (While a battery is charging, `online` may
// also be 0, but `status` is known.)
//
// The driver adds the battery when the mouse first reports to the receiver. Until then the mouse counts as present.
// Power supply events wake the program only while there is a node with this driver.
class BatteryHIDPresence : public HIDPresence {
  public:
    BatteryHIDPresence(SdEventLoop& loop, UdevdPaths udevd);

    Answer query(const std::string& nodeName, const UdevHIDNode& node) override;
    void forget(const std::string& nodeName) override;

  private:
    void listen();
    void eventsReadable();

    SdEventLoop& loop_;
    UdevdPaths udevd_;
    std::set<std::string> nodes_;  // the nodes with the receiver's driver
    Udev udev_;
    std::unique_ptr<UdevEvents> events_;         // open while `nodes_` is not empty, if events arrive
    std::unique_ptr<SdEventLoop::Watch> watch_;  // uses the descriptor, so it is destroyed first
};

}  // namespace kovra
