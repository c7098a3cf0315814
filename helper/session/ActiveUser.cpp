#include "helper/session/ActiveUser.h"

#include <cstdlib>
#include <system_error>
#include <utility>

namespace kovra::helper {

namespace {

constexpr const char* seat = "seat0";

// A text that sd-login has allocated; empty where it has none to give.
std::string answer(int (*ask)(const char*, char**), const char* of) {
    char* text = nullptr;
    if (ask(of, &text) < 0 || text == nullptr) return {};
    const Handle<char, std::free> owned(text);
    return text;
}

// Empty where the seat has no session in the foreground, or where that one ended while it was asked about.
std::optional<ForegroundSession> foregroundSession() {
    char* name = nullptr;
    if (sd_seat_get_active(seat, &name, nullptr) < 0 || name == nullptr) return std::nullopt;
    const Handle<char, std::free> owned(name);
    ForegroundSession session;
    const int remote = sd_session_is_remote(name);
    if (sd_session_get_uid(name, &session.user) < 0 || remote < 0) return std::nullopt;
    session.remote = remote > 0;
    session.kind = answer(sd_session_get_class, name);
    session.state = answer(sd_session_get_state, name);
    return session;
}

sd_login_monitor* monitor(const char* of) {
    sd_login_monitor* made = nullptr;
    const int result = sd_login_monitor_new(of, &made);
    if (result < 0) throw std::system_error(-result, std::generic_category(), "the login manager cannot be watched");
    return made;
}

}  // namespace

std::optional<uid_t> userAtTheMachine(const std::optional<ForegroundSession>& session) {
    if (!session || session->remote || session->kind != "user" || session->state != "active") return std::nullopt;
    return session->user;
}

ActiveUser::ActiveUser(Loop& loop) : seats_(monitor("seat")), sessions_(monitor("session")) {
    // Watched before the first look, so that nothing is missed in between.
    seatsWatch_ = loop.onReadable(sd_login_monitor_get_fd(seats_.get()), [this] { look(); });
    sessionsWatch_ = loop.onReadable(sd_login_monitor_get_fd(sessions_.get()), [this] { look(); });
    current_ = userAtTheMachine(foregroundSession());
}

void ActiveUser::look() {
    // Before the look, for the same reason.
    sd_login_monitor_flush(seats_.get());
    sd_login_monitor_flush(sessions_.get());
    const auto before = std::exchange(current_, userAtTheMachine(foregroundSession()));
    if (current_ != before && onChange) onChange();
}

}  // namespace kovra::helper
