#pragma once

#include "BLE_kovra/platform/linux/bus/MessageBus.h"

namespace kovra {

// The system bus, at $DBUS_SYSTEM_BUS_ADDRESS or else at its standard socket. A machine that has no system bus when the
// program starts gets none later.
class SystemBus : public MessageBus {
  public:
    explicit SystemBus(SdEventLoop& loop);
};

}  // namespace kovra
