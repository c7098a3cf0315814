#pragma once

#include <functional>
#include <string>

#include "BLE_kovra/platform/linux/session/FlagHandover.h"
#include "BLE_kovra/platform/linux/session/LogindSession.h"

namespace kovra {

class SdEventApplication;

// What the application does about the session that it runs in:
//  - the session has ended: it terminates;
//  - the flag was handed over to its user: it decides again, since a write that was refused may succeed now;
//  - the session is at the screen again: the same, and it expects a hand-over;
//  - the machine is awake again: the same, and before that the devices are compared with what is attached.
class SessionEvents {
  public:
    // `flag` is the flag file's absolute path, `resynchronizeDevices` is called after a resume.
    SessionEvents(SdEventLoop& loop, SystemBus& bus, std::string session, const std::string& flag,
                  SdEventApplication& application, std::function<void()> resynchronizeDevices);

  private:
    FlagHandover handover_;
    LogindSession session_;
};

}  // namespace kovra
