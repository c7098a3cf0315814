#pragma once

#include <memory>

#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"
#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// The hot keys of this desktop: X's own, the portal's on Wayland, and else one that refuses everything. `connection` is
// null where there is no X server.
std::unique_ptr<HotKeyService> makeHotKeyService(Desktop desktop, XConnection* connection, SessionBus& bus);

}  // namespace kovra
