#include "helper/session/ApplicationWatch.h"

#include <dirent.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstring>
#include <system_error>
#include <utility>
#include <vector>

#include "helper/Handles.h"
#include "helper/session/ApplicationProcess.h"

namespace kovra::helper {

namespace {

using namespace std::chrono_literals;

bool hasEnded(const Descriptor& pidfd) {
    pollfd event{pidfd.number(), POLLIN, 0};
    return ::poll(&event, 1, 0) != 0;
}

struct Candidate {
    BootTime start;
    pid_t number;
    pid_t parent;
};

// Returns the processes that look like the user's application, in the order of their starts.
std::vector<Candidate> applicationsOf(uid_t user) {
    std::vector<Candidate> found;
    const Handle<DIR, ::closedir> list(::opendir("/proc"));
    if (!list) return found;
    while (const dirent* entry = ::readdir(list.get())) {
        pid_t process = 0;
        const char* end = entry->d_name + std::strlen(entry->d_name);
        const auto number = std::from_chars(entry->d_name, end, process);
        if (number.ec != std::errc() || number.ptr != end) continue;
        const auto status = applicationOf(user, process);
        const auto start = status ? processStart(process) : std::nullopt;
        if (start) found.push_back({*start, process, status->parent});
    }
    std::ranges::stable_sort(found, {}, &Candidate::start);
    return found;
}

}  // namespace

std::optional<BootTime> ApplicationWatch::heldStartOf(uid_t user) {
    if (!pidfd_.isOpen()) return std::nullopt;
    if (user_ == user && !hasEnded(pidfd_) && applicationOf(user, pid_)) return start_;
    dropProcess();
    return std::nullopt;
}

std::optional<BootTime> ApplicationWatch::startOf(uid_t user) {
    if (const auto start = heldStartOf(user)) return start;
    return search(user) ? std::optional(start_) : std::nullopt;
}

void ApplicationWatch::release() {
    laterSearch_.reset();
    dropProcess();
    hasLostProcess_ = false;
}

void ApplicationWatch::dropProcess() {
    recheck_.reset();
    watch_.reset();
    pidfd_ = Descriptor();
    hasLostProcess_ = true;
}

bool ApplicationWatch::search(uid_t user) {
    laterSearch_.reset();
    const auto now = RateLimit::Clock::now();
    const auto delay = searches_.delay(now);
    if (delay > 0ms) {
        laterSearch_ = loop_.after(delay, [this, user] {
            if (search(user) && onChange) onChange();
        });
        return false;
    }
    searches_.use(now);
    if (!watchProcessOf(user)) return false;
    if (std::exchange(hasLostProcess_, false)) recheckAfter(firstCheck_);
    return true;
}

bool ApplicationWatch::watchProcessOf(uid_t user) {
    const auto applications = applicationsOf(user);
    for (const Candidate& candidate : applications) {
        // A child of the application is about to execute another program.
        const auto isParent = [&](const Candidate& other) { return other.number == candidate.parent; };
        if (std::ranges::any_of(applications, isParent)) continue;
        // The number may have been reused since the search, so the process is checked once more. If the pidfd's process
        // is still running after that check, it is the one that was checked. The system call is used because glibc 2.36
        // declares pidfd_open() without C linkage.
        Descriptor pidfd(static_cast<int>(::syscall(SYS_pidfd_open, candidate.number, 0)));
        if (!pidfd.isOpen() || !applicationOf(user, candidate.number)) continue;
        const auto start = processStart(candidate.number);
        if (!start || hasEnded(pidfd)) continue;
        pidfd_ = std::move(pidfd);
        pid_ = candidate.number;
        start_ = *start;
        user_ = user;
        watch_ = loop_.onReadable(pidfd_.number(), [this] { processEnded(); });
        return true;
    }
    return false;
}

void ApplicationWatch::processEnded() {
    dropProcess();
    if (onChange) onChange();
}

// The process that was found may be a child of the killed application that has yet to execute another program. Without
// its parent it looks like the application until then.
void ApplicationWatch::recheckAfter(std::chrono::milliseconds delay) {
    recheck_ = loop_.after(delay, [this, delay] {
        if (!heldStartOf(user_)) {
            if (onChange) onChange();
        } else if (delay < 100 * firstCheck_) {
            recheckAfter(10 * delay);
        }
    });
}

}  // namespace kovra::helper
