#include "helper/session/ApplicationWatch.h"

#include <dirent.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <charconv>
#include <cstring>
#include <map>
#include <optional>

#include "helper/session/ProcessStatus.h"

namespace kovra::helper {

namespace {

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

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

// The user's processes of that name, each with its parent.
std::map<pid_t, pid_t> applicationsOf(uid_t user) {
    std::map<pid_t, pid_t> found;
    const std::unique_ptr<DIR, CloseFolder> list(::opendir("/proc"));
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
    if (!hold(user_) && onEnd) onEnd();
}

}  // namespace kovra::helper
