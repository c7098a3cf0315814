#pragma once

#include <functional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/bus/SystemBus.h"

namespace kovra {

// What the login manager reports of the user's session and of the machine's sleep. Without a system bus or a login
// manager it stays silent.
class LogindSession {
  public:
    // Called from the queue.
    struct Events {
        std::function<void()> removed;    // the session has ended: the user has logged out
        std::function<void()> activated;  // the session is the one at the screen again, or for the first time
        std::function<void()> resumed;    // the machine is awake again
    };

    // The session that this process belongs to, or else the user's session at the screen; empty where there is none.
    static std::string currentSession();

    LogindSession(SystemBus& bus, std::string session, Events events);

  private:
    void receive(BusConnection& bus, const std::string& path);

    const std::string session_;
    const Events events_;
    std::vector<BusToken> received_;
};

}  // namespace kovra
