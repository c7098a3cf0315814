#pragma once

#include <functional>
#include <string>

#include "BLE_kovra/platform/linux/session/FlagHandover.h"
#include "BLE_kovra/platform/linux/session/LogindSession.h"

namespace kovra {

class SdEventApplication;

// Connects the events of the session and of the flag file to the application:
//  - The session has ended: the application terminates.
//  - The flag was handed over to the user: the application decides again, since a write that was refused may succeed.
//  - The session is active again: the application decides again, and a hand-over is expected.
//  - The machine has woken from sleep: the application compares its devices with the attached ones and decides again,
//    and a hand-over is expected.
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
