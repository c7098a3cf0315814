#pragma once

#include <functional>
#include <memory>
#include <string>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/session/DBusActivation.h"

namespace kovra {

class InstanceLock;
class SystemLog;

// The detection of a second start. The user's first instance holds the lock, and owns the program's name on its session
// bus. It requests the name again after a reconnection, and keeps running whatever happens to the name.
//
// A start that does not get the lock is a second one. So is a start that does not get the name, if the owner of the
// name replies as this program does. If there is no lock, an owner that does not reply counts as this program too. A
// second start asks the owner of the name to open its window. If that fails although another instance holds the lock,
// and still holds it a second later, one line is logged. An instance that is being killed releases it before.
//
// Without a session bus, or if the bus does not reply within two seconds, the lock alone decides. If another program
// owns the name, the first instance runs without it. It then logs one line and shows a notification on the desktop.
class SingleInstance {
  public:
    static constexpr const char* busName = "org.ble_kovra.BLEKovra";

    // The lock must outlive this object. In the first instance, `startedAgain` is called from the queue when the user
    // starts the program again. It receives the token that the desktop gave to that start, or an empty string.
    // `requested` is called from the queue when another program of the user asks for an action.
    SingleInstance(SessionBus& bus, const InstanceLock& lock, SystemLog& log, DBusActivation::Activated startedAgain,
                   DBusActivation::Requested requested);

    bool isSecond() const { return isSecond_; }

  private:
    void takeName(BusConnection& connection, const InstanceLock& lock, SystemLog& log);
    void busChanged(BusConnection* bus);

    bool isSecond_ = false;
    bool isAnswered_ = false;  // the bus has answered the request for the name
    DBusActivation activation_;
    BusToken listening_;
};

}  // namespace kovra
