#include "helper/flag/FlagFile.h"

#include <acl/libacl.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "helper/Handles.h"

namespace kovra::helper {

namespace {

using AccessList = Handle<std::remove_pointer_t<acl_t>, ::acl_free>;

// The complete access control list of a file that only the owner and this user, if there is one, can write. It is in
// the text form of acl(5), and names users by number, so that no user database is read.
std::string listFor(std::optional<uid_t> user) {
    if (!user) return "u::rw-,g::r--,o::r--";
    return "u::rw-,u:" + std::to_string(*user) + ":rw-,g::r--,m::rw-,o::r--";
}

// The access control list of the file, in the form that listFor() returns. Empty if it cannot be read.
std::string listOf(int file) {
    const AccessList list(acl_get_fd(file));
    if (!list) return {};
    const Handle<char, ::acl_free> text(acl_to_any_text(list.get(), nullptr, ',', TEXT_ABBREVIATE | TEXT_NUMERIC_IDS));
    return text ? text.get() : std::string();
}

}  // namespace

std::optional<FlagFile> FlagFile::open(int folder, const char* name, uid_t owner) {
    Descriptor file(::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat status{};
    const bool isRegular = file.isOpen() && ::fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode);
    if (!isRegular || status.st_uid != owner) return std::nullopt;
    return FlagFile(std::move(file));
}

std::optional<FlagFile> FlagFile::create(int folder, const char* name, Content content) {
    Descriptor file(::openat(folder, name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file.isOpen()) return std::nullopt;
    const std::string_view text = content == Content::on ? "on" : "off";
    const ssize_t written = ::write(file.number(), text.data(), text.size());
    if (written == static_cast<ssize_t>(text.size())) return FlagFile(std::move(file));
    const int error = written < 0 ? errno : ENOSPC;
    ::unlinkat(folder, name, 0);
    errno = error;
    return std::nullopt;
}

FlagFile::Content FlagFile::content() const {
    std::array<char, 4> text{};  // longer than "on", so that further bytes are noticed
    const ssize_t size = ::pread(file_.number(), text.data(), text.size(), 0);
    return size == 2 && text[0] == 'o' && text[1] == 'n' ? Content::on : Content::off;
}

WordCheck::Version FlagFile::version() const {
    struct stat status{};
    ::fstat(file_.number(), &status);
    const timespec& written = status.st_mtim;
    return {status.st_ino, std::chrono::seconds(written.tv_sec) + std::chrono::nanoseconds(written.tv_nsec)};
}

bool FlagFile::isOnAWritableDisk() const {
    struct statvfs disk{};
    return ::fstatvfs(file_.number(), &disk) == 0 && (disk.f_flag & ST_RDONLY) == 0;
}

void FlagFile::truncate() const {
    constexpr off_t longest = 3;
    constexpr blkcnt_t mostBlocks = 4096 / 512;
    struct stat status{};
    if (::fstat(file_.number(), &status) != 0 || (status.st_size <= longest && status.st_blocks <= mostBlocks)) return;
    const Descriptor writing = openForWriting();
    if (!writing.isOpen()) return;
    // Truncating a file to its current length frees what fallocate(2) has allocated beyond its end.
    [[maybe_unused]] const int result = ::ftruncate(writing.number(), std::min(status.st_size, longest));
}

void FlagFile::cleanContent() const {
    constexpr std::string_view off = "off";
    if (content() == Content::on) return;
    const Descriptor writing = openForWriting();
    if (!writing.isOpen()) return;
    const bool isWritten = ::pwrite(writing.number(), off.data(), off.size(), 0) == static_cast<ssize_t>(off.size());
    [[maybe_unused]] const int result = isWritten ? ::ftruncate(writing.number(), off.size()) : -1;
}

// A lease for reading is granted only while nobody has the file open for writing.
bool FlagFile::isOpenForWriting() const {
    if (::fcntl(file_.number(), F_SETLEASE, F_RDLCK) != 0) return errno == EAGAIN;
    ::fcntl(file_.number(), F_SETLEASE, F_UNLCK);
    return false;
}

Descriptor FlagFile::openForWriting() const {
    const std::string path = "/proc/self/fd/" + std::to_string(file_.number());
    return Descriptor(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
}

bool FlagFile::hasOtherNameIn(int folder, const char* name) const {
    struct stat own{};
    if (::fstat(file_.number(), &own) != 0) return true;
    if (own.st_nlink == 1) return false;
    const Handle<DIR, ::closedir> entries(::fdopendir(::openat(folder, ".", O_RDONLY | O_CLOEXEC)));
    if (!entries) return true;
    while (const dirent* entry = ::readdir(entries.get())) {
        struct stat status{};
        const bool isThisFile = ::fstatat(folder, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                                status.st_dev == own.st_dev && status.st_ino == own.st_ino;
        if (isThisFile && std::strcmp(entry->d_name, name) != 0) return true;
    }
    return false;
}

bool FlagFile::isWritableBy(std::optional<uid_t> user) const { return listOf(file_.number()) == listFor(user); }

std::optional<uid_t> FlagFile::writer() const {
    const std::string list = listOf(file_.number());
    constexpr std::string_view owner = "u::rw-,u:";
    if (!list.starts_with(owner)) return std::nullopt;
    uid_t user = 0;
    std::from_chars(list.data() + owner.size(), list.data() + list.size(), user);
    return list == listFor(user) ? std::optional(user) : std::nullopt;
}

bool FlagFile::grantWriteTo(std::optional<uid_t> user) const {
    const AccessList list(acl_from_text(listFor(user).c_str()));
    return list && acl_set_fd(file_.number(), list.get()) == 0;
}

}  // namespace kovra::helper
