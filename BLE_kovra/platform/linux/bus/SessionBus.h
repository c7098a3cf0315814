#pragma once

#include "BLE_kovra/platform/linux/bus/MessageBus.h"

namespace kovra {

// The session bus, at $DBUS_SESSION_BUS_ADDRESS or else at the socket `bus` in $XDG_RUNTIME_DIR.
class SessionBus : public MessageBus {
  public:
    explicit SessionBus(SdEventLoop& loop);
};

}  // namespace kovra
