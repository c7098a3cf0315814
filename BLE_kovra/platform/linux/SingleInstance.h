#pragma once

#include <memory>

#include "BLE_kovra/platform/linux/SessionBus.h"

namespace kovra {

// Lets a second start in the same session see that the first is running: the first holds the program's name on the
// session bus, and asks for it again after the bus was gone. Where there is no session bus, or it does not answer
// within two seconds, every start counts as the first. What counted as the first once keeps running whatever happens
// to the name.
class SingleInstance {
  public:
    static constexpr const char* busName = "org.ble_kovra.BLEKovra";

    explicit SingleInstance(SessionBus& bus);

    bool isSecond() const { return isSecond_; }

  private:
    void ask(sd_bus* bus) const;

    bool isSecond_ = false;
    bool isAnswered_ = false;  // on this connection
    std::shared_ptr<SessionBus::Listener> listener_;
};

}  // namespace kovra
