#pragma once

#include <functional>
#include <memory>
#include <string>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/session/DBusActivation.h"

namespace kovra {

class SystemLog;

// Detects a second start in the same session. The first instance owns the program's name on the session bus, and
// requests it again after a reconnection.
//
// Without a session bus, or if the bus does not answer within two seconds, every start counts as the first. The first
// instance keeps running whatever happens to the name. A second start asks the first to come to the front.
//
// Another program may own the name. If the owner does not answer as this program does, this start counts as the first
// and runs without the name. A line in the log and a notification on the desktop say so.
class SingleInstance {
  public:
    static constexpr const char* busName = "org.ble_kovra.BLEKovra";

    // In the first instance, `startedAgain` is called from the queue when the user starts the program again. It
    // receives the token that the desktop gave to that start, or an empty string.
    SingleInstance(SessionBus& bus, SystemLog& log, DBusActivation::Activated startedAgain);

    bool isSecond() const { return isSecond_; }

  private:
    void busChanged(BusConnection* bus);

    bool isSecond_ = false;
    bool isAnswered_ = false;  // the bus has answered on this connection
    DBusActivation activation_;
    BusToken listening_;
};

}  // namespace kovra
