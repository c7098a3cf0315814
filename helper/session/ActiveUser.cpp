#include "helper/session/ActiveUser.h"

#include <cstdlib>
#include <system_error>
#include <utility>

namespace kovra::helper {

namespace {

constexpr const char* seat = "seat0";

// Calls one of sd-login's functions that return a text about a session. Returns an empty string if the function fails.
std::string sessionText(int (*get)(const char*, char**), const char* session) {
    char* text = nullptr;
    if (get(session, &text) < 0 || text == nullptr) return {};
    const Handle<char, std::free> owned(text);
    return text;
}

// The session in the foreground of the seat. Empty if there is none, or if it ends during the call.
std::optional<ForegroundSession> foregroundSession() {
    char* name = nullptr;
    if (sd_seat_get_active(seat, &name, nullptr) < 0 || name == nullptr) return std::nullopt;
    const Handle<char, std::free> owned(name);
    ForegroundSession session;
    const int remote = sd_session_is_remote(name);
    if (sd_session_get_uid(name, &session.user) < 0 || remote < 0) return std::nullopt;
    session.remote = remote > 0;
    session.sessionClass = sessionText(sd_session_get_class, name);
    session.state = sessionText(sd_session_get_state, name);
    return session;
}

sd_login_monitor* newMonitor(const char* category) {
    sd_login_monitor* monitor = nullptr;
    const int result = sd_login_monitor_new(category, &monitor);
    if (result < 0) throw std::system_error(-result, std::generic_category(), "the login manager cannot be watched");
    return monitor;
}

}  // namespace

std::optional<uid_t> userAtTheMachine(const std::optional<ForegroundSession>& session) {
    if (!session || session->remote || session->sessionClass != "user" || session->state != "active")
        return std::nullopt;
    return session->user;
}

ActiveUser::ActiveUser(Loop& loop) : seats_(newMonitor("seat")), sessions_(newMonitor("session")) {
    // Watching starts before the first read, so that no change is missed in between.
    seatsWatch_ = loop.onReadable(sd_login_monitor_get_fd(seats_.get()), [this] { update(); });
    sessionsWatch_ = loop.onReadable(sd_login_monitor_get_fd(sessions_.get()), [this] { update(); });
    current_ = userAtTheMachine(foregroundSession());
}

void ActiveUser::update() {
    // The monitors are flushed before reading, for the same reason.
    sd_login_monitor_flush(seats_.get());
    sd_login_monitor_flush(sessions_.get());
    const auto before = std::exchange(current_, userAtTheMachine(foregroundSession()));
    if (current_ != before && onChange) onChange();
}

}  // namespace kovra::helper
