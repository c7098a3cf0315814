#pragma once

#include <sys/types.h>
#include <systemd/sd-login.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "helper/Backoff.h"
#include "helper/Descriptor.h"
#include "helper/Handles.h"
#include "helper/Loop.h"
#include "helper/PacedWatch.h"

namespace kovra::helper {

// The session in the foreground of seat0, as the login manager describes it.
struct ForegroundSession {
    uid_t user = 0;
    std::string sessionClass;  // "user", "greeter", "lock-screen", "background", ...
    std::string state;         // "online", "active", "closing"
    bool remote = false;
    unsigned terminal = 0;  // the number of its virtual terminal; 0 if it has none
};

// The user at the machine: the owner of an active local session of class "user". Empty for any other session, and if
// the session has a virtual terminal but the kernel shows another one. `shownTerminal` is 0 if the kernel has none.
std::optional<uid_t> userAtTheMachine(const std::optional<ForegroundSession>& session, unsigned shownTerminal);

// Watches who is at the machine, through the login manager's files about seats and sessions.
//
// It also watches which virtual terminal the kernel shows. A login manager that hangs does not write that the user has
// switched to another terminal. Somebody else may be at the machine then, so no user counts as being there.
//
// Other users can cause events without end: any session may have its file rewritten, and a process that was started on
// a terminal may switch terminals. So the files are read at most ten times in a row, and then 20 times a second. No
// change is lost, but it may be noticed up to 50 ms late.
//
// While the files cannot be read, nobody counts as being at the machine. One line is logged, and they are read again
// after growing delays.
class ActiveUser {
  public:
    // The sysfs attribute that contains the name of the shown virtual terminal, such as "tty2".
    static constexpr const char* shownTerminalPath = "/sys/class/tty/tty0/active";

    // Throws std::system_error if the login manager's files cannot be watched, for example because the system has no
    // login manager.
    explicit ActiveUser(Loop& loop, const std::string& terminalPath = shownTerminalPath);

    // The user at the machine, updated before each call of onChange.
    std::optional<uid_t> current() const { return current_; }
    // Called when another user, or no user, is at the machine now.
    std::function<void()> onChange;

  private:
    using Monitor = Handle<sd_login_monitor, sd_login_monitor_unref>;

    void update();
    std::optional<uid_t> read();
    unsigned shownTerminal() const;

    Monitor seats_;
    Monitor sessions_;
    Descriptor shownTerminal_;
    Descriptor changes_;  // readable while one of the three above has something new
    Loop& loop_;
    std::optional<PacedWatch> watch_;
    Backoff backoff_{std::chrono::seconds(1), std::chrono::minutes(1)};
    std::unique_ptr<Loop::Watch> retry_;  // of a failed read
    std::optional<uid_t> current_;
};

}  // namespace kovra::helper
