#include "helper/session/ActiveUser.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>

#include "helper/Log.h"

namespace kovra::helper {

namespace {

constexpr const char* seat = "seat0";

// How often the login manager's files are read at most. The comment of the class gives the reason.
const RateLimit looksAtSessions(10, std::chrono::milliseconds(50));

// Notes the error of one of sd-login's functions, and returns its result. That there is no such seat or session, and
// that its file does not have a valid value, is no error.
int noted(int result, int& error) {
    const bool isError = result < 0 && result != -ENXIO && result != -ENODATA && result != -ENOENT && result != -EINVAL;
    if (isError) error = -result;
    return result;
}

// Calls one of sd-login's functions that return a text about a session. Returns an empty string if the function fails.
std::string sessionText(int (*get)(const char*, char**), const char* session, int& error) {
    char* text = nullptr;
    if (noted(get(session, &text), error) < 0 || text == nullptr) return {};
    const Handle<char, std::free> owned(text);
    return text;
}

// Returns the session in the foreground of the seat. Empty if there is none, or if sd-login cannot read its user or
// whether it is remote, for example because the session has just ended. Sets `error` if the files cannot be read.
std::optional<ForegroundSession> foregroundSession(int& error) {
    char* name = nullptr;
    if (noted(sd_seat_get_active(seat, &name, nullptr), error) < 0 || name == nullptr) return std::nullopt;
    const Handle<char, std::free> owned(name);
    ForegroundSession session;
    const int remote = noted(sd_session_is_remote(name), error);
    if (noted(sd_session_get_uid(name, &session.user), error) < 0 || remote < 0) return std::nullopt;
    session.remote = remote > 0;
    session.sessionClass = sessionText(sd_session_get_class, name, error);
    session.state = sessionText(sd_session_get_state, name, error);
    // The session need not have a virtual terminal.
    if (noted(sd_session_get_vt(name, &session.terminal), error) < 0) session.terminal = 0;
    return session;
}

sd_login_monitor* newMonitor(const char* category) {
    sd_login_monitor* monitor = nullptr;
    const int result = sd_login_monitor_new(category, &monitor);
    if (result < 0) throw std::system_error(-result, std::generic_category(), "the login manager cannot be watched");
    return monitor;
}

// Makes the epoll descriptor `changes` readable while one of these events is pending on the descriptor.
void include(const Descriptor& changes, int descriptor, std::uint32_t events) {
    epoll_event event{.events = events, .data = {}};
    if (::epoll_ctl(changes.number(), EPOLL_CTL_ADD, descriptor, &event) != 0)
        throw std::system_error(errno, std::generic_category(), "the login manager cannot be watched");
}

}  // namespace

std::optional<uid_t> userAtTheMachine(const std::optional<ForegroundSession>& session, unsigned shownTerminal) {
    if (!session || session->remote || session->sessionClass != "user" || session->state != "active")
        return std::nullopt;
    const bool isBehind = session->terminal != 0 && shownTerminal != 0 && session->terminal != shownTerminal;
    return isBehind ? std::nullopt : std::optional(session->user);
}

ActiveUser::ActiveUser(Loop& loop, const std::string& terminalPath)
    : seats_(newMonitor("seat")),
      sessions_(newMonitor("session")),
      shownTerminal_(::open(terminalPath.c_str(), O_RDONLY | O_CLOEXEC)),
      changes_(::epoll_create1(EPOLL_CLOEXEC)),
      loop_(loop) {
    // Watching starts before the first read, so that no change is missed in between.
    include(changes_, sd_login_monitor_get_fd(seats_.get()), EPOLLIN);
    include(changes_, sd_login_monitor_get_fd(sessions_.get()), EPOLLIN);
    // The kernel reports a new value of an attribute of sysfs as EPOLLPRI, until the attribute is read from its start.
    if (shownTerminal_.isOpen()) include(changes_, shownTerminal_.number(), EPOLLPRI);
    watch_.emplace(loop, changes_.number(), looksAtSessions, [this] { update(); });
    current_ = read();
}

void ActiveUser::update() {
    // Flushing comes before reading, so that a change during the read causes another update.
    sd_login_monitor_flush(seats_.get());
    sd_login_monitor_flush(sessions_.get());
    const auto before = std::exchange(current_, read());
    if (current_ != before && onChange) onChange();
}

std::optional<uid_t> ActiveUser::read() {
    int error = 0;
    const auto session = foregroundSession(error);
    retry_.reset();
    if (error == 0) {
        backoff_.reset();
        return userAtTheMachine(session, shownTerminal());
    }
    logError("who is at the machine cannot be read", error);
    retry_ = loop_.after(backoff_.nextDelay(), [this] { update(); });
    return std::nullopt;
}

// Returns the number of the shown virtual terminal, or 0 if the kernel has none. Reading the attribute also makes the
// kernel report its next value.
unsigned ActiveUser::shownTerminal() const {
    constexpr std::string_view prefix = "tty";
    std::array<char, 16> text{};
    const ssize_t size = shownTerminal_.isOpen() ? ::pread(shownTerminal_.number(), text.data(), text.size(), 0) : -1;
    const std::string_view name(text.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
    unsigned number = 0;
    if (name.starts_with(prefix)) std::from_chars(name.begin() + prefix.size(), name.end(), number);
    return number;
}

}  // namespace kovra::helper
