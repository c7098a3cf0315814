#include "BLE_kovra/platform/linux/session/FlagHandover.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <system_error>
#include <utility>

namespace kovra {

namespace {

// The helper renames a new file to the flag's name, which inotify reports as IN_MOVED_TO. Writes are not watched,
// because the program writes the flag itself.
constexpr std::uint32_t watchedEvents = IN_MOVED_TO | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

// A program that may create the flag does so with its first write, and must not be woken by that. Nothing is lost:
// where it may create files, no missing flag has kept it from writing. If it loses that right, IN_ATTRIB reports it.
std::uint32_t eventsIn(const std::string& folder, bool isFlagsFolder) {
    const bool mayCreateFlag = isFlagsFolder && ::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
    return mayCreateFlag ? watchedEvents : watchedEvents | IN_CREATE;
}

// Enough for a full queue of the kernel. More may arrive during the reads, so there must be an end.
constexpr int mostReads = 256;

}  // namespace

FlagHandover::FlagHandover(SdEventLoop& loop, const std::string& flag, std::function<void()> handedOver)
    : loop_(loop), handedOver_(std::move(handedOver)) {
    for (std::size_t slash = flag.find('/'); slash != std::string::npos; slash = flag.find('/', slash + 1)) {
        const std::size_t name = slash + 1;
        path_.push_back(
            {flag.substr(0, std::max<std::size_t>(slash, 1)), flag.substr(name, flag.find('/', name) - name)});
    }
    openWatch();
    expect();
}

FlagHandover::~FlagHandover() {
    for (const auto* task : {&fallback_, &nextLook_}) {
        if (*task) (*task)->cancel();
    }
}

void FlagHandover::expect() {
    if (!isWatching()) reportAfter(expectedHandoverDelay);
}

void FlagHandover::reportAfter(std::chrono::seconds delay) {
    if (fallback_) fallback_->cancel();
    fallback_ = loop_.asyncAfter(delay, [this, delay] {
        if (lacksWatches_) openWatch();
        if (lacksWatches_) reportAfter(std::min(2 * delay, longestDelay));
        report();
    });
}

void FlagHandover::openWatch() {
    lacksWatches_ = true;
    if (!inotify_ || !inotify_->isOpen()) inotify_.emplace(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!inotify_->isOpen()) return;
    try {
        if (!watch_) watch_ = loop_.watch(inotify_->number(), [this] { changed(); });
    } catch (const std::system_error&) {
        return;  // no descriptors are left
    }
    watchNearestFolder();
}

// Tries to watch each folder from the root downwards, and keeps the last watch that succeeds. If a folder is created
// just after it was found missing, the watch on its parent reports that.
void FlagHandover::watchNearestFolder() {
    const int before = std::exchange(watchDescriptor_, -1);
    watchedStep_ = nullptr;
    lacksWatches_ = false;
    for (const Step& step : path_) {
        const std::uint32_t events = eventsIn(step.folder, &step == &path_.back());
        const int added = ::inotify_add_watch(inotify_->number(), step.folder.c_str(), events);
        if (added < 0) {
            lacksWatches_ = lacksWatches_ || errno == ENOSPC || errno == ENOMEM;
            continue;
        }
        if (watchDescriptor_ >= 0) ::inotify_rm_watch(inotify_->number(), watchDescriptor_);
        watchDescriptor_ = added;
        watchedStep_ = &step;
    }
    if (before >= 0 && before != watchDescriptor_) ::inotify_rm_watch(inotify_->number(), before);
}

void FlagHandover::changed() {
    if (concernsFlag()) {
        watchNearestFolder();
        if (lacksWatches_) reportAfter(expectedHandoverDelay);
        report();
    }
    listenAgain();
}

void FlagHandover::listenAgain() {
    const auto now = std::chrono::steady_clock::now();
    lookedUntil_ = std::max(lookedUntil_, now - mostAtOnce * pause) + pause;
    if (lookedUntil_ <= now)
        watch_->rearm();
    else
        nextLook_ = loop_.asyncAfter(pause, [this] { watch_->rearm(); });
}

void FlagHandover::report() const {
    const Step& last = path_.back();
    if (::access(last.folder.c_str(), F_OK) != 0) return;
    const std::string flag = last.folder + '/' + last.name;
    const bool isSomebodyElses = ::faccessat(AT_FDCWD, flag.c_str(), W_OK, AT_EACCESS) != 0 && errno == EACCES;
    if (!isSomebodyElses) handedOver_();
}

// A folder that does not exist needs no watch of its own: its nearest existing parent has one.
bool FlagHandover::isWatching() const {
    return watch_ && (watchedStep_ == &path_.back() || ::access(path_.back().folder.c_str(), F_OK) != 0);
}

// Reads the pending events and returns whether any of them concerns the flag. Late events of a folder that is no longer
// watched are ignored.
bool FlagHandover::concernsFlag() {
    bool concerns = false;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): read() fills it
    alignas(inotify_event) std::array<char, 4096> events;
    ssize_t count;
    for (int reads = 0; reads < mostReads && (count = ::read(inotify_->number(), events.data(), events.size())) > 0;
         ++reads) {
        for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
            inotify_event event{};
            std::memcpy(&event, events.data() + at, sizeof event);
            const char* name = events.data() + at + sizeof event;
            const bool isLost = (event.mask & IN_Q_OVERFLOW) != 0;
            if (isLost || (event.wd == watchDescriptor_ && (event.len == 0 || watchedStep_->name == name)))
                concerns = true;
            at += sizeof event + event.len;
        }
    }
    return concerns;
}

}  // namespace kovra
