#pragma once

#include <memory>
#include <set>
#include <string>

#include "BLE_kovra/platform/linux/hid/HIDPresence.h"
#include "BLE_kovra/platform/linux/hid/UdevEvents.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

// What the kernel says of a mouse at a receiver, by way of the mouse's battery. The receiver's driver keeps the mouse's
// node for as long as the two are paired; when the receiver reports the mouse gone, its battery goes offline and its
// status becomes unknown. (A battery that is being charged may be offline too, but its status is known.)
//
// A mouse gets a battery when it is first heard of. While there is no such mouse, no power supply's event wakes the
// program.
class BatteryHIDPresence : public HIDPresence {
  public:
    BatteryHIDPresence(SdEventLoop& loop, UdevSigns signs);

    Answer ask(const std::string& nodeName, const UdevHIDNode& node) override;
    void forget(const std::string& nodeName) override;

  private:
    void listen();
    void eventsReadable();

    SdEventLoop& loop_;
    UdevSigns signs_;
    std::set<std::string> nodes_;  // of such mice
    Udev udev_;
    std::unique_ptr<UdevEvents> events_;         // present while there are any, where udevd can be heard
    std::unique_ptr<SdEventLoop::Watch> watch_;  // of the events' descriptor, so it goes first
};

}  // namespace kovra
