#pragma once

#include <optional>

#include "BLE_kovra/platform/linux/BusConnection.h"

namespace kovra {

// Lets a second start in the same session see that the first is running: the first holds the program's name on the
// session bus. Where there is no session bus, or it does not answer within two seconds, every start counts as the
// first.
class SingleInstance {
  public:
    static constexpr const char* busName = "org.ble_kovra.BLEKovra";

    explicit SingleInstance(SdEventLoop& loop);

    bool isSecond() const { return isSecond_; }

  private:
    bool isSecond_ = false;
    std::optional<BusConnection> connection_;
};

}  // namespace kovra
