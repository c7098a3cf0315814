#include "helper/flag/FlagFolder.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "helper/Log.h"
#include "helper/flag/FlagFile.h"
#include "helper/flag/HandOver.h"
#include "helper/flag/LeftFiles.h"
#include "helper/flag/TrustedPath.h"

namespace kovra::helper {

namespace {

// How often the events are read at most. The comment of the class gives the reason.
const RateLimit looks(10, std::chrono::milliseconds(50));

// Events of the folders above the flag's folder. They show that the path's next folder was moved or removed, or that
// the mode of a folder has changed. The kernel reports them for all entries of a watched folder, not for one entry
// alone.
constexpr std::uint32_t pathEvents = IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB;
// Events of the flag's folder: the flag's name may refer to another file, or the mode of the folder or of a file in it
// has changed. Writing to files in the folder, such as those that other users have left, causes none of these events.
constexpr std::uint32_t folderEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB;
// Events of the flag: its content, its access control list or its number of hard links has changed. The file itself is
// watched, because it can also be written through another hard link.
constexpr std::uint32_t flagEvents = IN_MODIFY | IN_ATTRIB;

// Watches the open file, even if its name refers to another file by now. Returns the watch descriptor, or -1, with
// errno set, if that fails.
int addWatch(const Descriptor& events, const Descriptor& file, std::uint32_t mask) {
    const std::string path = "/proc/self/fd/" + std::to_string(file.number());
    return ::inotify_add_watch(events.number(), path.c_str(), mask);
}

}  // namespace

std::unique_ptr<FlagFolder> FlagFolder::open(Loop& loop, const std::string& path, const Trust& trust) {
    std::unique_ptr<FlagFolder> folder(new FlagFolder(loop, path, trust));
    if (!folder->watch()) return nullptr;
    return folder;
}

// What may have changed, according to a number of events.
struct FlagFolder::Changes {
    bool path = false;
    bool flagReplaced = false;
    bool flagWritten = false;
};

bool FlagFolder::watch() {
    TrustedPath trusted = openTrustedPath(trust_.root, path_, trust_.owner);
    if (trusted.folders.empty()) {
        log(Severity::error, "the flag's folder cannot be trusted: " + trusted.refusal);
        return false;
    }
    folder_ = std::move(trusted.folders.back());
    trusted.folders.pop_back();
    events_ = Descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    bool areWatched = events_.isOpen();
    for (std::size_t parent = 0; parent < trusted.folders.size(); ++parent) {
        const int wd = areWatched ? addWatch(events_, trusted.folders[parent], pathEvents) : -1;
        areWatched = wd >= 0;
        if (areWatched) nextNames_[wd] = trusted.names[parent];
    }
    if (areWatched) folderWd_ = addWatch(events_, folder_, folderEvents);
    if (folderWd_ < 0) {
        logError("the flag's folder cannot be watched", errno);
        return false;
    }
    watch_ = std::make_unique<PacedWatch>(loop_, events_.number(), looks, [this] { receiveEvents(); });
    cleanFlagFolder(folder_.number(), trust_.owner);
    watchFlag();
    leftFiles_ = std::make_unique<LeftFilesWatch>(loop_, folder_.number(), trust_.owner);
    // The path may have changed before it was watched.
    return !isLost();
}

bool FlagFolder::handOver(std::optional<uid_t> user) {
    // If the flag only lacks its watch, a new file would not get a watch either.
    const int error = isWritableBy(user) && !isFlagWatched_ ? 0 : handOverFlag(folder_.number(), trust_.owner, user);
    const int errorOfWatch = watchFlag();
    leftFiles_->update();
    if (error != 0) {
        logError("the flag cannot be handed over, so that nothing is muted", error);
    } else if (errorOfWatch != 0) {
        logError("the flag cannot be watched, so that nothing is muted", errorOfWatch);
    } else if (!isWritableBy(user)) {
        log(Severity::error, "the flag's file system alters access control lists, so that nothing is muted");
    }
    return error == 0 && isFlagOf(user);
}

bool FlagFolder::isFlagOf(std::optional<uid_t> user) const { return isFlagWatched_ && isWritableBy(user); }

bool FlagFolder::isWritableBy(std::optional<uid_t> user) const {
    const auto flag = FlagFile::open(folder_.number(), flagName, trust_.owner);
    return flag && flag->isWritableBy(user);
}

bool FlagFolder::isOn(BootTime since) {
    const auto flag = FlagFile::open(folder_.number(), flagName, trust_.owner);
    return isFlagWatched_ && flag && flag->isOnAWritableDisk() && !flag->hasOtherNameIn(folder_.number(), flagName) &&
           flag->content() == FlagFile::Content::on && word_.isWrittenSince(since, flag->version());
}

int FlagFolder::watchFlag() {
    const Descriptor flag(::openat(folder_.number(), flagName, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status{};
    const bool isFound = flag.isOpen() && ::fstat(flag.number(), &status) == 0;
    // A file that cannot be opened may be one that says "on", so that it must count as one that is not watched.
    int error = isFound || errno == ENOENT ? 0 : errno;
    const bool isFile = isFound && S_ISREG(status.st_mode);
    const int before = std::exchange(flagWd_, isFile ? addWatch(events_, flag, flagEvents) : -1);
    if (isFile && flagWd_ < 0) error = errno;
    if (before >= 0 && before != flagWd_) ::inotify_rm_watch(events_.number(), before);
    isFlagWatched_ = error == 0;
    return error;
}

void FlagFolder::receiveEvents() {
    // By default the kernel's queue holds 16,384 events. Others may add to it while it is read, so the reads are
    // limited.
    constexpr int mostReads = 64;
    Changes changes;
    for (int reads = 0; reads < mostReads && readEvents(changes); ++reads) continue;
    if (changes.path && isLost()) {
        watch_.reset();
        if (onLost) onLost();
        return;
    }
    if (changes.flagReplaced) watchFlag();
    if ((changes.flagReplaced || changes.flagWritten) && onChange) onChange();
}

bool FlagFolder::readEvents(Changes& changes) const {
    constexpr std::size_t longestEvent = sizeof(inotify_event) + NAME_MAX + 1;
    alignas(inotify_event) std::array<char, 16'384> buffer{};
    const ssize_t size = ::read(events_.number(), buffer.data(), buffer.size());
    for (ssize_t at = 0; at < size;) {
        inotify_event event{};
        std::memcpy(&event, buffer.data() + at, sizeof event);
        const char* name = buffer.data() + at + sizeof event;
        at += static_cast<ssize_t>(sizeof event + event.len);
        const auto parent = nextNames_.find(event.wd);
        if ((event.mask & IN_Q_OVERFLOW) != 0) {
            // The kernel has dropped events, which may have been of any kind.
            changes.path = true;
            changes.flagReplaced = true;
        } else if (event.wd == flagWd_) {
            changes.flagWritten = true;
        } else if (event.wd == folderWd_ && event.len > 0) {
            changes.flagReplaced = changes.flagReplaced || std::strcmp(name, flagName) == 0;
        } else if (parent == nextNames_.end() || event.len == 0 || parent->second == name) {
            changes.path = true;
        }
    }
    return size > static_cast<ssize_t>(buffer.size() - longestEvent);
}

bool FlagFolder::isLost() const {
    const TrustedPath trusted = openTrustedPath(trust_.root, path_, trust_.owner);
    if (!trusted.folders.empty() && isSameFile(trusted.folders.back(), folder_)) return false;
    log(Severity::error, "the flag's folder is lost: " +
                             (trusted.refusal.empty() ? path_ + ": it is another one now" : trusted.refusal));
    return true;
}

}  // namespace kovra::helper
