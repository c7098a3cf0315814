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

constexpr const char* newName = "state.new";

constexpr std::string_view leftPrefix = "state.left.";

std::string leftName(uid_t user) { return std::string(leftPrefix) + std::to_string(user); }

// Removes any file or folder with this name, without following links. A folder that is not empty is renamed to
// *.odd.INODE instead, because the helper did not create it. Returns 0 or an error number.
int clearName(int folder, const std::string& name) {
    if (::unlinkat(folder, name.c_str(), 0) == 0 || errno == ENOENT) return 0;
    if (errno != EISDIR) return errno;
    if (::unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0) return 0;
    struct stat status {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return errno;
    const std::string odd = name + ".odd." + std::to_string(status.st_ino);
    return ::renameat2(folder, name.c_str(), folder, odd.c_str(), RENAME_NOREPLACE) == 0 ? 0 : errno;
}

// Steps 1 and 2 of handOverFlag(). Does not touch a flag unless exactly one user can write it, since the helper creates
// no other. If the link cannot be created, the right is revoked anyway. The user's content is lost then, but the
// trackpad works.
void revokeOld(int folder, uid_t owner) {
    const auto old = FlagFile::open(folder, flagName, owner);
    const auto user = old ? old->writer() : std::nullopt;
    if (!user) return;
    old->truncate();  // first, because this file may be what has filled the disk
    ::linkat(folder, flagName, folder, leftName(*user).c_str(), 0);
    old->grantWriteTo(std::nullopt);
}

// Truncates all files state.left.USER. Users can still make them longer through descriptors that they have kept open. A
// file that any user can open for writing does not come from the helper, and is not touched.
void truncateLeft(int folder, uid_t owner) {
    const Handle<DIR, ::closedir> entries(::fdopendir(::openat(folder, ".", O_RDONLY | O_CLOEXEC)));
    if (!entries) return;
    while (const dirent* entry = ::readdir(entries.get())) {
        if (!std::string_view(entry->d_name).starts_with(leftPrefix)) continue;
        const auto left = FlagFile::open(folder, entry->d_name, owner);
        if (left && left->isWritableBy(std::nullopt)) left->truncate();
    }
}

FlagFile::Content leftContent(int folder, uid_t owner, uid_t user) {
    const auto left = FlagFile::open(folder, leftName(user).c_str(), owner);
    return left ? left->content() : FlagFile::Content::off;
}

// Steps 3 and 4 of handOverFlag().
int replaceFlag(int folder, std::optional<uid_t> user, FlagFile::Content content) {
    const auto newFlag = FlagFile::create(folder, newName, content);
    if (!newFlag) return errno;
    if (newFlag->grantWriteTo(user)) {
        if (::renameat(folder, newName, folder, flagName) == 0) return 0;
        // A file cannot replace a folder. A folder was no flag, so no reader misses it for a moment.
        if (errno == EISDIR && clearName(folder, flagName) == 0 && ::renameat(folder, newName, folder, flagName) == 0) {
            return 0;
        }
    }
    const int error = errno;
    clearName(folder, newName);
    return error;
}

}  // namespace

void cleanFlagFolder(int folder, uid_t owner) {
    clearName(folder, newName);
    const auto flag = FlagFile::open(folder, flagName, owner);
    if (const auto user = flag ? flag->writer() : std::nullopt) clearName(folder, leftName(*user));
}

int handOverFlag(int folder, uid_t owner, std::optional<uid_t> user) {
    cleanFlagFolder(folder, owner);
    revokeOld(folder, owner);
    truncateLeft(folder, owner);
    const auto content = user ? leftContent(folder, owner, *user) : FlagFile::Content::off;
    if (const int error = replaceFlag(folder, user, content)) {
        // If the old user's right could not be revoked, the flag is still that user's. It counts again once it has a
        // single name.
        cleanFlagFolder(folder, owner);
        return error;
    }
    if (user) clearName(folder, leftName(*user));
    return 0;
}

}  // namespace kovra::helper
