#pragma once

#include <functional>
#include <memory>
#include <string>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/session/DBusActivation.h"

namespace kovra {

// Lets a second start in the same session see that the first is running: the first holds the program's name on the
// session bus, and asks for it again after the bus was gone. Where there is no session bus, or it does not answer
// within two seconds, every start counts as the first. What counted as the first once keeps running whatever happens
// to the name. A second start asks the first to come forward, and waits for no answer.
class SingleInstance {
  public:
    static constexpr const char* busName = "org.ble_kovra.BLEKovra";

    // Of the first, `startedAgain` is called from the queue when the user starts the program again. The token, where
    // there is one, is the right to come to the front that the desktop gave that start.
    SingleInstance(SessionBus& bus, DBusActivation::Activated startedAgain);

    bool isSecond() const { return isSecond_; }

  private:
    void busChanged(BusConnection* bus);

    bool isSecond_ = false;
    bool isAnswered_ = false;  // on this connection
    DBusActivation activation_;
    BusToken listening_;
};

}  // namespace kovra
