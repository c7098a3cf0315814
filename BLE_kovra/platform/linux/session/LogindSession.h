#pragma once

#include <functional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/bus/SystemBus.h"

namespace kovra {

// What the login manager tells of the user's session and of the machine's sleep. Without a system bus or a login
// manager it stays silent.
class LogindSession {
  public:
    // The session that this process belongs to, or else the user's session at the screen; empty where there is none.
    static std::string currentSession();

    LogindSession(SystemBus& bus, std::string session);

    // Called from the queue.
    std::function<void()> onRemoved;    // the session has ended: the user has logged out
    std::function<void()> onActivated;  // the session is the one at the screen again, or for the first time
    std::function<void()> onResumed;    // the machine is awake again

  private:
    void listen(const std::string& match, sd_bus_message_handler_t handler);
    static int sessionChanged(sd_bus_message* message, void* context, sd_bus_error* error);
    static int sessionRemoved(sd_bus_message* message, void* context, sd_bus_error* error);
    static int prepareForSleep(sd_bus_message* message, void* context, sd_bus_error* error);

    SystemBus& bus_;
    const std::string session_;
    std::vector<BusSlot> slots_;
};

}  // namespace kovra
