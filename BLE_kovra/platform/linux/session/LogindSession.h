#pragma once

#include <functional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/bus/SystemBus.h"

namespace kovra {

// Reports the login manager's signals about the user's session and about the machine's sleep. Without a system bus or a
// login manager, nothing is reported. A lost connection hides signals. Once it is there again, the session is reported
// as removed if it has ended meanwhile, or else the machine as woken.
class LogindSession {
  public:
    // These functions are called from the queue.
    struct Events {
        std::function<void()> removed;    // the session has ended: the user has logged out
        std::function<void()> activated;  // the session has become the active one
        std::function<void()> resumed;    // the machine has woken from sleep
    };

    // Returns the session of this process, or else the one in $XDG_SESSION_ID, or else the user's graphical session.
    // Returns an empty text if there is none.
    static std::string currentSession();

    // Returns whether the login manager has a file for this session.
    static bool exists(const std::string& session);

    // `isThere` returns whether a session exists. The end of the session is reported only if the session no longer
    // exists.
    LogindSession(SystemBus& bus, std::string session, Events events,
                  std::function<bool(const std::string&)> isThere = exists);

  private:
    void busChanged(BusConnection* bus);
    void subscribe(BusConnection& bus);
    void subscribeToSession(BusConnection& bus, const std::string& path);

    const std::string session_;
    const Events events_;
    const std::function<bool(const std::string&)> isThere_;
    bool wasThere_ = false;  // whether the session existed when a connection was lost
    std::vector<BusToken> received_;
    BusToken listening_;
};

}  // namespace kovra
