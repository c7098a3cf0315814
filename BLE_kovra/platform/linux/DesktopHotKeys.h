#pragma once

#include <memory>

#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/linux/XConnection.h"

namespace kovra {

// The hot keys of this desktop, one that refuses everything where there are none. `connection` is null where the
// session is not X's.
std::unique_ptr<HotKeyService> makeHotKeyService(SdEventLoop& loop, XConnection* connection);

}  // namespace kovra
