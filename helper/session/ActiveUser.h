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

// What the login manager says of the session in the foreground of the seat.
struct ForegroundSession {
    uid_t user = 0;
    std::string kind;   // "user", "greeter", "lock-screen", "background", ...
    std::string state;  // "online", "active", "closing"
    bool remote = false;
};

// The user at the machine: somebody's own local session, in the foreground and not on its way out. Else nobody.
std::optional<uid_t> userAtTheMachine(const std::optional<ForegroundSession>& session);

// Who is at the machine, by the files that the login manager keeps about seat0 and the sessions.
class ActiveUser {
  public:
    // Throws std::system_error where the system has no login manager that keeps such files.
    explicit ActiveUser(Loop& loop);

    // As of the last look: at the start, and then before each onChange.
    std::optional<uid_t> current() const { return current_; }
    // Called when somebody else is at the machine, or nobody any more.
    std::function<void()> onChange;

  private:
    using Monitor = Handle<sd_login_monitor, sd_login_monitor_unref>;

    void look();

    Monitor seats_;
    Monitor sessions_;
    std::unique_ptr<Loop::Watch> seatsWatch_;
    std::unique_ptr<Loop::Watch> sessionsWatch_;
    std::optional<uid_t> current_;
};

}  // namespace kovra::helper
