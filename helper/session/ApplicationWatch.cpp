#include "helper/session/ApplicationWatch.h"

#include <dirent.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cstring>
#include <map>
#include <optional>

#include "helper/Handles.h"
#include "helper/session/ProcessStatus.h"

namespace kovra::helper {

namespace {

using namespace std::chrono_literals;

constexpr const char* application = "ble-kovra";

std::optional<ProcessStatus> applicationOf(uid_t user, pid_t process) {
    auto status = processStatus(process);
    const bool so = status && status->name == application && status->realUser == user && status->effectiveUser == user;
    return so ? status : std::nullopt;
}

bool hasEnded(const Descriptor& process) {
    pollfd asked{process.number(), POLLIN, 0};
    return ::poll(&asked, 1, 0) != 0;
}

// The user's processes of that name, each with its parent.
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

bool ApplicationWatch::lives(uid_t user) {
    if (process_.isOpen() && user_ == user && !hasEnded(process_) && applicationOf(user, number_)) return true;
    forget();
    return hold(user);
}

void ApplicationWatch::forget() {
    again_.reset();
    watch_.reset();
    process_ = Descriptor();
}

bool ApplicationWatch::hold(uid_t user) {
    const auto applications = applicationsOf(user);
    for (const auto& [number, parent] : applications) {
        // A program that the application starts has its name until it is another program; its end would mean nothing.
        if (applications.contains(parent)) continue;
        // The number may have come to mean another process meanwhile. The descriptor means one process for good: that
        // one, if it still lives after it has been looked at by its number.
        // By its number: C++ cannot link to the function of glibc 2.36.
        Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, number, 0)));
        if (!process.isOpen() || !applicationOf(user, number) || hasEnded(process)) continue;
        process_ = std::move(process);
        number_ = number;
        user_ = user;
        watch_ = loop_.onReadable(process_.number(), [this] { ended(); });
        return true;
    }
    return false;
}

void ApplicationWatch::ended() {
    forget();
    if (hold(user_))
        lookAgainAfter(100ms);
    else if (onEnd)
        onEnd();
}

// The other one may be a program that the application was starting when it ended: without its parent it looks like the
// application until it is read off the disk, and nobody is told when it has become what it is.
void ApplicationWatch::lookAgainAfter(std::chrono::milliseconds pause) {
    again_ = loop_.after(pause, [this, pause] {
        if (!lives(user_)) {
            if (onEnd) onEnd();
        } else if (pause < 10s) {
            lookAgainAfter(10 * pause);
        }
    });
}

}  // namespace kovra::helper
