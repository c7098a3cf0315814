#include "helper/flag/HandOver.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>

#include "helper/Handles.h"
#include "helper/flag/FlagFile.h"

namespace kovra::helper {

namespace {

constexpr const char* freshName = "state.new";

constexpr std::string_view leftPrefix = "state.left.";

std::string leftName(uid_t user) { return std::string(leftPrefix) + std::to_string(user); }

// Frees the name, whatever it stands for, without following it. A folder with something in it is kept, as *.odd.NUMBER:
// it is none of ours. 0, or the error.
int freeName(int folder, const std::string& name) {
    if (::unlinkat(folder, name.c_str(), 0) == 0 || errno == ENOENT) return 0;
    if (errno != EISDIR) return errno;
    if (::unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0) return 0;
    struct stat status {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return errno;
    const std::string odd = name + ".odd." + std::to_string(status.st_ino);
    return ::renameat2(folder, name.c_str(), folder, odd.c_str(), RENAME_NOREPLACE) == 0 ? 0 : errno;
}

// Steps 1 and 2. A file that is open to anybody else than one user was not made here, and stays as it is. Where the
// name cannot be made, the right is taken away all the same: what that user left is lost, and the trackpad is theirs.
void closeOld(int folder, uid_t owner) {
    const auto old = FlagFile::open(folder, flagName, owner);
    const auto user = old ? old->writer() : std::nullopt;
    if (!user) return;
    old->cut();  // first, since it may be what has filled the disk
    ::linkat(folder, flagName, folder, leftName(*user).c_str(), 0);
    old->letWrite(std::nullopt);
}

// What reaches these files through a descriptor that a user has kept open has no bounds. A file that is open to
// somebody else, or to anybody by its mode, was not made here, and stays as it is.
void cutLeft(int folder, uid_t owner) {
    const Handle<DIR, ::closedir> entries(::fdopendir(::openat(folder, ".", O_RDONLY | O_CLOEXEC)));
    if (!entries) return;
    while (const dirent* entry = ::readdir(entries.get())) {
        if (!std::string_view(entry->d_name).starts_with(leftPrefix)) continue;
        const auto left = FlagFile::open(folder, entry->d_name, owner);
        if (left && left->isWritableBy(std::nullopt)) left->cut();
    }
}

FlagFile::Content lastLeft(int folder, uid_t owner, uid_t user) {
    const auto left = FlagFile::open(folder, leftName(user).c_str(), owner);
    return left ? left->content() : FlagFile::Content::off;
}

// Steps 3 and 4.
int placeFresh(int folder, std::optional<uid_t> user, FlagFile::Content content) {
    const auto fresh = FlagFile::create(folder, freshName, content);
    if (!fresh) return errno;
    if (fresh->letWrite(user)) {
        if (::renameat(folder, freshName, folder, flagName) == 0) return 0;
        // Only a folder stands in the way of a file, and it was no flag: here nobody misses it for a moment.
        if (errno == EISDIR && freeName(folder, flagName) == 0 &&
            ::renameat(folder, freshName, folder, flagName) == 0) {
            return 0;
        }
    }
    const int error = errno;
    freeName(folder, freshName);
    return error;
}

}  // namespace

void clearUpFlagFolder(int folder, uid_t owner) {
    freeName(folder, freshName);
    const auto flag = FlagFile::open(folder, flagName, owner);
    if (const auto user = flag ? flag->writer() : std::nullopt) freeName(folder, leftName(*user));
}

int handOverFlag(int folder, uid_t owner, std::optional<uid_t> user) {
    clearUpFlagFolder(folder, owner);
    closeOld(folder, owner);
    cutLeft(folder, owner);
    const auto content = user ? lastLeft(folder, owner, *user) : FlagFile::Content::off;
    if (const int error = placeFresh(folder, user, content)) {
        // A flag whose user's right could not be taken away goes on being theirs, and counts with one name alone.
        clearUpFlagFolder(folder, owner);
        return error;
    }
    if (user) freeName(folder, leftName(*user));
    return 0;
}

}  // namespace kovra::helper
