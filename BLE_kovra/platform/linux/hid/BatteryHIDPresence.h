#pragma once

#include <memory>
#include <set>
#include <string>

#include "BLE_kovra/platform/linux/hid/HIDPresence.h"
#include "BLE_kovra/platform/linux/hid/UdevEvents.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

// The presence of a mouse at a receiver, derived from the mouse's battery. The receiver's driver keeps the mouse's node
// for as long as the two are paired. When the receiver reports the mouse as disconnected, the battery goes offline and
// its status becomes unknown. (A charging battery may be offline too, but its status is known.)
//
// A mouse gets a battery when it first reports to the receiver; until then the mouse counts as present. Power supply
// events wake the program only while there is a node with this driver.
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
    std::unique_ptr<UdevEvents> events_;         // open while there are such nodes, if udevd is reachable
    std::unique_ptr<SdEventLoop::Watch> watch_;  // uses the descriptor, so it is destroyed first
};

}  // namespace kovra
