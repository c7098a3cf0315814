#include "helper/session/ApplicationWatch.h"

#include <dirent.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cstring>
#include <map>
#include <system_error>

#include "helper/Handles.h"
#include "helper/session/ApplicationProcess.h"

namespace kovra::helper {

namespace {

using namespace std::chrono_literals;

bool hasEnded(const Descriptor& pidfd) {
    pollfd event{pidfd.number(), POLLIN, 0};
    return ::poll(&event, 1, 0) != 0;
}

// Returns the processes that look like the user's application, each with its parent.
std::map<pid_t, pid_t> applicationsOf(uid_t user) {
    std::map<pid_t, pid_t> found;
    const Handle<DIR, ::closedir> list(::opendir("/proc"));
    if (!list) return found;
    while (const dirent* entry = ::readdir(list.get())) {
        pid_t process = 0;
        const char* end = entry->d_name + std::strlen(entry->d_name);
        const auto number = std::from_chars(entry->d_name, end, process);
        if (number.ec != std::errc() || number.ptr != end) continue;
        if (const auto status = applicationOf(user, process)) found.emplace(process, status->parent);
    }
    return found;
}

}  // namespace

bool ApplicationWatch::isRunning(uid_t user) {
    if (pidfd_.isOpen() && user_ == user && !hasEnded(pidfd_) && applicationOf(user, pid_)) return true;
    release();
    return search(user);
}

void ApplicationWatch::release() {
    laterSearch_.reset();
    recheck_.reset();
    watch_.reset();
    pidfd_ = Descriptor();
}

bool ApplicationWatch::search(uid_t user) {
    const auto now = RateLimit::Clock::now();
    const auto delay = searches_.delay(now);
    if (delay > 0ms) {
        laterSearch_ = loop_.after(delay, [this, user] {
            if (search(user) && onChange) onChange();
        });
        return false;
    }
    searches_.use(now);
    return watchProcessOf(user);
}

bool ApplicationWatch::watchProcessOf(uid_t user) {
    const auto applications = applicationsOf(user);
    for (const auto& [number, parent] : applications) {
        // This process is a child of the application, and is about to execute another program.
        if (applications.contains(parent)) continue;
        // The number may have been reused since the search, so the process is checked once more. If the pidfd's process
        // is still running after that check, it is the one that was checked. The system call is used because glibc 2.36
        // declares pidfd_open() without C linkage.
        Descriptor pidfd(static_cast<int>(::syscall(SYS_pidfd_open, number, 0)));
        if (!pidfd.isOpen() || !applicationOf(user, number) || hasEnded(pidfd)) continue;
        pidfd_ = std::move(pidfd);
        pid_ = number;
        user_ = user;
        watch_ = loop_.onReadable(pidfd_.number(), [this] { processEnded(); });
        return true;
    }
    return false;
}

void ApplicationWatch::processEnded() {
    release();
    if (search(user_))
        recheckAfter(100ms);
    else if (onChange)
        onChange();
}

// The process that was found may be a child of the killed application that has yet to execute another program. Without
// its parent it looks like the application until then.
void ApplicationWatch::recheckAfter(std::chrono::milliseconds delay) {
    recheck_ = loop_.after(delay, [this, delay] {
        if (!isRunning(user_)) {
            if (onChange) onChange();
        } else if (delay < 10s) {
            recheckAfter(10 * delay);
        }
    });
}

}  // namespace kovra::helper
