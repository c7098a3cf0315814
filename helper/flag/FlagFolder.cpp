#include "helper/flag/FlagFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "helper/Log.h"
#include "helper/flag/FlagFile.h"
#include "helper/flag/HandOver.h"
#include "helper/flag/TrustedWay.h"

namespace kovra::helper {

namespace {

// A folder on the way: whether the next one still stands in it, and who may write to that one.
constexpr std::uint32_t eventsOnTheWay = IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB;
// The folder itself: which file is the flag. What is written to the files in it, the kept ones of other users among
// them, wakes nobody.
constexpr std::uint32_t eventsOfTheFolder = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB;
// The flag: what it says, and whether it has got another name. By the file and not by its name in the folder, since it
// can also be written through another name.
constexpr std::uint32_t eventsOfTheFlag = IN_MODIFY | IN_ATTRIB;

// Marks the very file that is open, whatever its name stands for by now. -1, with errno set, where that fails.
int mark(const Descriptor& events, const Descriptor& file, std::uint32_t what) {
    const std::string path = "/proc/self/fd/" + std::to_string(file.number());
    return ::inotify_add_watch(events.number(), path.c_str(), what);
}

bool areTheSame(const Descriptor& one, const Descriptor& other) {
    struct stat first {};
    struct stat second {};
    if (::fstat(one.number(), &first) != 0 || ::fstat(other.number(), &second) != 0) return false;
    return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

}  // namespace

std::unique_ptr<FlagFolder> FlagFolder::open(Loop& loop, const std::filesystem::path& path, const Trust& trust) {
    std::unique_ptr<FlagFolder> folder(new FlagFolder(path, trust));
    if (!folder->hold(loop)) return nullptr;
    return folder;
}

bool FlagFolder::hold(Loop& loop) {
    TrustedWay way = openTrustedWay(trust_.start, path_, trust_.owner);
    if (way.folders.empty()) {
        log(Severity::error, "the flag's folder cannot be trusted: " + way.refusal);
        return false;
    }
    folder_ = std::move(way.folders.back());
    way.folders.pop_back();
    events_ = Descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    bool isMarked = events_.isOpen();
    for (const auto& onTheWay : way.folders) isMarked = isMarked && mark(events_, onTheWay, eventsOnTheWay) >= 0;
    if (isMarked) folderMark_ = mark(events_, folder_, eventsOfTheFolder);
    if (folderMark_ < 0) {
        logError("the flag's folder cannot be watched", errno);
        return false;
    }
    watch_ = loop.onReadable(events_.number(), [this] { happened(); });
    clearUpFlagFolder(folder_.number(), trust_.owner);
    watchFlag();
    // What happened before the marks stood.
    return !isLost();
}

bool FlagFolder::handOver(std::optional<uid_t> user) {
    // A flag that is theirs already lacks nothing but its watch, and another file would not have one either.
    const int error = isWritableBy(user) && !isWatched_ ? 0 : handOverFlag(folder_.number(), trust_.owner, user);
    const int errorOfWatch = watchFlag();
    if (error != 0) {
        logError("the flag cannot be handed over, so that nothing is muted", error);
    } else if (errorOfWatch != 0) {
        logError("the flag cannot be watched, so that nothing is muted", errorOfWatch);
    }
    return error == 0 && isWatched_;
}

bool FlagFolder::isOf(std::optional<uid_t> user) const { return isWatched_ && isWritableBy(user); }

bool FlagFolder::isWritableBy(std::optional<uid_t> user) const {
    const auto flag = FlagFile::open(folder_.number(), flagName, trust_.owner);
    return flag && flag->isWritableBy(user);
}

bool FlagFolder::saysOn() const {
    const auto flag = FlagFile::open(folder_.number(), flagName, trust_.owner);
    return isWatched_ && flag && !flag->hasOtherNames() && flag->content() == FlagFile::Content::on;
}

int FlagFolder::watchFlag() {
    const Descriptor flag(::openat(folder_.number(), flagName, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    const bool isFile = flag.isOpen() && ::fstat(flag.number(), &status) == 0 && S_ISREG(status.st_mode);
    const int before = std::exchange(flagMark_, isFile ? mark(events_, flag, eventsOfTheFlag) : -1);
    const int error = isFile && flagMark_ < 0 ? errno : 0;
    if (before >= 0 && before != flagMark_) ::inotify_rm_watch(events_.number(), before);
    isWatched_ = error == 0;
    return error;
}

void FlagFolder::happened() {
    alignas(inotify_event) std::array<char, 4096> buffer{};
    const ssize_t size = ::read(events_.number(), buffer.data(), buffer.size());
    bool onTheWay = false;
    bool isAnother = false;
    bool isWritten = false;
    for (ssize_t at = 0; at < size;) {
        inotify_event event{};
        std::memcpy(&event, buffer.data() + at, sizeof event);
        const char* name = buffer.data() + at + sizeof event;
        at += static_cast<ssize_t>(sizeof event + event.len);
        if ((event.mask & IN_Q_OVERFLOW) != 0) {
            // Too much happened: whatever is not told any more may be among it.
            onTheWay = true;
            isAnother = true;
        } else if (event.wd == flagMark_) {
            isWritten = true;
        } else if (event.wd == folderMark_ && event.len > 0) {
            isAnother = isAnother || std::strcmp(name, flagName) == 0;
        } else {
            onTheWay = true;
        }
    }
    if (onTheWay && isLost()) {
        watch_.reset();
        if (onLost) onLost();
        return;
    }
    if (isAnother) watchFlag();
    if ((isAnother || isWritten) && onChange) onChange();
}

bool FlagFolder::isLost() const {
    const TrustedWay way = openTrustedWay(trust_.start, path_, trust_.owner);
    if (!way.folders.empty() && areTheSame(way.folders.back(), folder_)) return false;
    log(Severity::error, "the flag's folder is lost: " +
                             (way.refusal.empty() ? path_.string() + ": it is another one now" : way.refusal));
    return true;
}

}  // namespace kovra::helper
