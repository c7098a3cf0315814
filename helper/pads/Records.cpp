#include "helper/pads/Records.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "helper/Handles.h"
#include "helper/Log.h"

namespace kovra::helper {

namespace {

constexpr const char* folderName = "pads";

bool isDigit(char character) { return character >= '0' && character <= '9'; }

std::set<std::string> namesIn(const Descriptor& folder) {
    std::set<std::string> names;
    const Handle<DIR, ::closedir> entries(::fdopendir(::openat(folder.number(), ".", O_RDONLY | O_CLOEXEC)));
    while (const dirent* entry = entries ? ::readdir(entries.get()) : nullptr) {
        if (Records::isName(entry->d_name)) names.insert(entry->d_name);
    }
    return names;
}

// Nobody else may put anything there, nor anything in its place.
int mistrust(const Descriptor& folder) {
    for (const char* name : {".", ".."}) {
        struct stat found {};
        if (::fstatat(folder.number(), name, &found, AT_SYMLINK_NOFOLLOW) != 0) return errno;
        if (found.st_uid != ::geteuid() || (found.st_mode & (S_IWGRP | S_IWOTH)) != 0) return EPERM;
    }
    return 0;
}

bool isSame(const Descriptor& one, const Descriptor& other) {
    struct stat first {};
    struct stat second {};
    return ::fstat(one.number(), &first) == 0 && ::fstat(other.number(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

}  // namespace

bool Records::isName(std::string_view name) {
    constexpr std::string_view prefix = "input";
    if (!name.starts_with(prefix)) return false;
    name.remove_prefix(prefix.size());
    return !name.empty() && name.size() <= 20 && std::all_of(name.begin(), name.end(), isDigit);
}

Records::Records(std::string runtimeFolder) : runtimeFolder_(std::move(runtimeFolder)) {
    int error = 0;
    const Descriptor found = folder(IfMissing::leave, error);
    if (found.isOpen())
        names_ = namesIn(found);
    else if (error != ENOENT)
        logError("the records of muted touchpads cannot be read", error);
}

int Records::claim(IfMissing ifMissing) {
    int error = 0;
    Descriptor found = folder(ifMissing, error);
    if (!found.isOpen()) return error;
    if (isSame(found, claimed_)) return 0;
    if (::flock(found.number(), LOCK_EX | LOCK_NB) != 0) return errno;
    names_.merge(namesIn(found));  // what whoever had them until now has left
    claimed_ = std::move(found);
    return 0;
}

int Records::add(const std::string& name) {
    if (!isName(name)) return EINVAL;
    if (const int error = claim(IfMissing::make)) return error;
    if (const int error = mistrust(claimed_)) return error;
    const Descriptor file(
        ::openat(claimed_.number(), name.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
    if (!file.isOpen()) return errno;
    names_.insert(name);
    return 0;
}

void Records::remove(const std::string& name) {
    names_.erase(name);
    int error = 0;
    const Descriptor found = folder(IfMissing::leave, error);
    if (found.isOpen()) ::unlinkat(found.number(), name.c_str(), 0);
}

Descriptor Records::folder(IfMissing ifMissing, int& error) const {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    if (ifMissing == IfMissing::make) ::mkdir(runtimeFolder_.c_str(), 0755);
    const Descriptor parent(::open(runtimeFolder_.c_str(), flags));
    if (parent.isOpen() && ifMissing == IfMissing::make) ::mkdirat(parent.number(), folderName, 0700);
    Descriptor found(parent.isOpen() ? ::openat(parent.number(), folderName, flags) : -1);
    error = found.isOpen() ? 0 : errno;
    return found;
}

}  // namespace kovra::helper
