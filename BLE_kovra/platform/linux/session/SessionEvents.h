#pragma once

#include <functional>
#include <string>

#include "BLE_kovra/platform/linux/session/FlagHandover.h"
#include "BLE_kovra/platform/linux/session/LogindSession.h"

namespace kovra {

class SdEventApplication;

// Connects the events of the session to the application:
//  - The session has ended: the application terminates.
//  - The flag was handed over to the user: it decides again, since a write that was refused may succeed now.
//  - The session is active again: it decides again and expects a hand-over.
//  - The machine has woken from sleep: it compares the devices with what is attached, decides again and expects a
//    hand-over.
class SessionEvents {
  public:
    // `flag` is the absolute path of the flag file. `resynchronizeDevices` is called after the machine has woken.
    SessionEvents(SdEventLoop& loop, SystemBus& bus, std::string session, const std::string& flag,
                  SdEventApplication& application, std::function<void()> resynchronizeDevices);

  private:
    FlagHandover handover_;
    LogindSession session_;
};

}  // namespace kovra
