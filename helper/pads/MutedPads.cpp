#include "helper/pads/MutedPads.h"

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
        if (MutedPads::isName(entry->d_name)) names.insert(entry->d_name);
    }
    return names;
}

// Returns 0 if the folder and its parent belong to this process's user, and neither group nor others may write them.
// Otherwise returns an error number, since another user could change or replace the folder.
int checkTrusted(const Descriptor& folder) {
    for (const char* name : {".", ".."}) {
        struct stat found{};
        if (::fstatat(folder.number(), name, &found, AT_SYMLINK_NOFOLLOW) != 0) return errno;
        if (found.st_uid != ::geteuid() || (found.st_mode & (S_IWGRP | S_IWOTH)) != 0) return EPERM;
    }
    return 0;
}

}  // namespace

bool MutedPads::isName(std::string_view name) {
    constexpr std::string_view prefix = "input";
    if (!name.starts_with(prefix)) return false;
    name.remove_prefix(prefix.size());
    return !name.empty() && name.size() <= 20 && std::all_of(name.begin(), name.end(), isDigit);
}

MutedPads::MutedPads(std::string runtimeFolder) : runtimeFolder_(std::move(runtimeFolder)) {
    int error = 0;
    const Descriptor found = folder(IfMissing::fail, error);
    if (found.isOpen())
        names_ = namesIn(found);
    else if (error != ENOENT)
        logError("the records of muted touchpads cannot be read", error);
}

int MutedPads::lock(IfMissing ifMissing) {
    int error = 0;
    Descriptor found = folder(ifMissing, error);
    if (!found.isOpen()) return error;
    if (isSameFile(found, lockedFolder_)) return 0;
    if (::flock(found.number(), LOCK_EX | LOCK_NB) != 0) return errno;
    names_.merge(namesIn(found));  // another process may have added some meanwhile
    lockedFolder_ = std::move(found);
    return 0;
}

int MutedPads::add(const std::string& name) {
    if (!isName(name)) return EINVAL;
    if (const int error = lock(IfMissing::create)) return error;
    if (const int error = checkTrusted(lockedFolder_)) return error;
    const Descriptor file(
        ::openat(lockedFolder_.number(), name.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
    if (!file.isOpen()) return errno;
    names_.insert(name);
    return 0;
}

void MutedPads::remove(const std::string& name) {
    names_.erase(name);
    int error = 0;
    const Descriptor found = folder(IfMissing::fail, error);
    if (found.isOpen()) ::unlinkat(found.number(), name.c_str(), 0);
}

Descriptor MutedPads::folder(IfMissing ifMissing, int& error) const {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    if (ifMissing == IfMissing::create) ::mkdir(runtimeFolder_.c_str(), 0755);
    const Descriptor parent(::open(runtimeFolder_.c_str(), flags));
    if (parent.isOpen() && ifMissing == IfMissing::create) ::mkdirat(parent.number(), folderName, 0700);
    Descriptor found(parent.isOpen() ? ::openat(parent.number(), folderName, flags) : -1);
    error = found.isOpen() ? 0 : errno;
    return found;
}

}  // namespace kovra::helper
