#pragma once

#include <sys/types.h>
#include <systemd/sd-login.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "helper/Handles.h"
#include "helper/Loop.h"

namespace kovra::helper {

// The session in the foreground of the seat, as the login manager describes it.
struct ForegroundSession {
    uid_t user = 0;
    std::string sessionClass;  // "user", "greeter", "lock-screen", "background", ...
    std::string state;         // "online", "active", "closing"
    bool remote = false;
};

// The user at the machine: the owner of an active local session of class "user". Empty for any other session.
std::optional<uid_t> userAtTheMachine(const std::optional<ForegroundSession>& session);

// Tells which user is at the machine. It watches the files of the login manager about seat0 and its sessions.
class ActiveUser {
  public:
    // Throws std::system_error if the system has no login manager with these files.
    explicit ActiveUser(Loop& loop);

    // The user at the machine, updated before each call of onChange.
    std::optional<uid_t> current() const { return current_; }
    // Called when another user, or no user, is at the machine now.
    std::function<void()> onChange;

  private:
    using Monitor = Handle<sd_login_monitor, sd_login_monitor_unref>;

    void update();

    Monitor seats_;
    Monitor sessions_;
    std::unique_ptr<Loop::Watch> seatsWatch_;
    std::unique_ptr<Loop::Watch> sessionsWatch_;
    std::optional<uid_t> current_;
};

}  // namespace kovra::helper
