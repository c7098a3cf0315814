#include "helper/flag/HandOver.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "helper/flag/FlagFile.h"
#include "helper/flag/LeftFiles.h"

namespace kovra::helper {

namespace {

constexpr const char* newName = "state.new";

// Removes any file or folder with this name, without following links. A folder that is not empty is renamed to
// *.odd.INODE instead, because the helper did not create it. Returns 0 or an error number.
int clearName(int folder, const std::string& name) {
    if (::unlinkat(folder, name.c_str(), 0) == 0 || errno == ENOENT) return 0;
    if (errno != EISDIR) return errno;
    if (::unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0) return 0;
    struct stat status{};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return errno;
    const std::string odd = name + ".odd." + std::to_string(status.st_ino);
    return ::renameat2(folder, name.c_str(), folder, odd.c_str(), RENAME_NOREPLACE) == 0 ? 0 : errno;
}

// Steps 1 and 2 of handOverFlag(). Does nothing if no user can write the flag, or if its access control list is not one
// that the helper sets. If the file has as many links as the file system permits, it is renamed; until step 4 there is
// no flag then, which means "off". If the link cannot be created for another reason, the right is revoked anyway. The
// user's content is lost then, but the trackpad works.
void revokeOld(int folder, uid_t owner) {
    const auto old = FlagFile::open(folder, flagName, owner);
    const auto user = old ? old->writer() : std::nullopt;
    if (!user) return;
    old->truncate();  // first, because this file may be what has filled the disk
    const std::string left = leftName(*user);
    if (::linkat(folder, flagName, folder, left.c_str(), 0) != 0 && errno == EMLINK)
        ::renameat(folder, flagName, folder, left.c_str());
    old->grantWriteTo(std::nullopt);
}

// Renames this file to the flag's name. If a folder has that name, it is removed or renamed first, since a file cannot
// replace a folder. A folder is no flag, so no reader misses a flag meanwhile. Returns 0 or an error number.
int renameToFlag(int folder, const std::string& name) {
    const auto rename = [&] { return ::renameat(folder, name.c_str(), folder, flagName) == 0; };
    if (rename()) return 0;
    return errno == EISDIR && clearName(folder, flagName) == 0 && rename() ? 0 : errno;
}

// Steps 3 and 4 of handOverFlag() for a user who has left a file.
int returnLeft(int folder, uid_t owner, const FlagFile& left, uid_t user) {
    left.cleanContent();
    if (!left.grantWriteTo(user)) return errno;
    const std::string name = leftName(user);
    if (const int error = renameToFlag(folder, name)) {
        left.grantWriteTo(std::nullopt);
        return error;
    }
    // If both names were links to this file, rename(2) has done nothing and caused no event. The application watches
    // the folder for events with the flag's name, so the right is set once more through that name.
    clearName(folder, name);
    if (const auto flag = FlagFile::open(folder, flagName, owner)) flag->grantWriteTo(user);
    return 0;
}

// Whether a file could not be opened for want of a descriptor or of memory. Then it may be anybody's.
bool isShortage(int error) { return error == EMFILE || error == ENFILE || error == ENOMEM; }

// Steps 3 and 4 of handOverFlag() with a new file that says "off".
int replaceFlag(int folder, std::optional<uid_t> user) {
    const auto newFlag = FlagFile::create(folder, newName, FlagFile::Content::off);
    if (!newFlag) return errno;
    const int error = newFlag->grantWriteTo(user) ? renameToFlag(folder, newName) : errno;
    if (error != 0) clearName(folder, newName);
    return error;
}

// Steps 3 and 4 of handOverFlag().
int putInPlace(int folder, uid_t owner, std::optional<uid_t> user) {
    errno = 0;
    const auto left = user ? FlagFile::open(folder, leftName(*user).c_str(), owner) : std::nullopt;
    if (!left && isShortage(errno)) return errno;
    const bool isOurs = left && left->isWritableBy(std::nullopt);
    if (user && !isOurs) clearName(folder, leftName(*user));
    return isOurs ? returnLeft(folder, owner, *left, *user) : replaceFlag(folder, user);
}

}  // namespace

void cleanFlagFolder(int folder, uid_t owner) {
    clearName(folder, newName);
    const auto flag = FlagFile::open(folder, flagName, owner);
    if (const auto user = flag ? flag->writer() : std::nullopt) clearName(folder, leftName(*user));
    forEachLeftFile(folder, owner, [](const std::string&, const FlagFile& left) {
        if (left.writer()) left.grantWriteTo(std::nullopt);
    });
}

int handOverFlag(int folder, uid_t owner, std::optional<uid_t> user) {
    cleanFlagFolder(folder, owner);
    revokeOld(folder, owner);
    truncateLeftFiles(folder, owner);
    const int error = putInPlace(folder, owner, user);
    // If the old user's right could not be revoked, the flag is still that user's. Cleaning removes its second hard
    // link, so that it counts again.
    if (error != 0) cleanFlagFolder(folder, owner);
    return error;
}

}  // namespace kovra::helper
