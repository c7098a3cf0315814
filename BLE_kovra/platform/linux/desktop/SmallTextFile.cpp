#include "BLE_kovra/platform/linux/desktop/SmallTextFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "BLE_kovra/platform/posix/FileDescriptor.h"
#include "BLE_kovra/platform/posix/Path.h"

namespace kovra {

namespace {

int readAll(int file, std::string& text) {
    std::array<char, 16384> piece;  // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
    for (;;) {
        const ssize_t count = ::read(file, piece.data(), piece.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return errno;
        if (count == 0) return 0;
        text.append(piece.data(), static_cast<std::size_t>(count));
        if (text.size() > SmallTextFile::largestSize) return EFBIG;
    }
}

int writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(file, text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return errno;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return 0;
}

// Resolves the symbolic links at the path. The final file need not exist.
int followLinks(std::string& path) {
    int links = 0;
    while (const std::optional<std::string> target = linkTarget(path)) {
        if (++links > 40) return ELOOP;
        path = target->starts_with('/') ? *target : folderOf(path) + '/' + *target;
    }
    return 0;
}

int makeFolders(const std::string& folder) {
    if (::mkdir(folder.c_str(), 0700) == 0) return 0;
    if (errno == EEXIST) return 0;  // if it is not a directory, creating a file in it fails
    if (errno != ENOENT || folder.empty()) return errno;
    if (const int error = makeFolders(folderOf(folder))) return error;
    return ::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST ? 0 : errno;
}

// Creates a second hard link to the file, under a name that does not exist yet.
int keepAside(const std::string& file) {
    constexpr int mostNames = 1000;
    for (int number = 1; number <= mostNames; ++number) {
        const std::string suffix = number == 1 ? ".damaged" : ".damaged-" + std::to_string(number);
        if (::link(file.c_str(), (file + suffix).c_str()) == 0) return 0;
        if (errno != EEXIST) return errno;
    }
    return EEXIST;
}

int writeAndSync(int number, const std::string& text) {
    FileDescriptor file(number);
    int error = writeAll(number, text);
    if (error == 0 && ::fsync(number) != 0) error = errno;
    const int errorAtClose = file.close();
    return error != 0 ? error : errorAtClose;
}

// Writes the rename to the disk, so that it survives a crash. Some file systems do not support this; the file is
// complete in any case.
void syncFolder(const std::string& folder) {
    const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen()) ::fsync(opened.number());
}

}  // namespace

int SmallTextFile::read(std::string& text) const {
    text.clear();
    // O_NONBLOCK: opening a FIFO must not wait for a writer.
    const FileDescriptor file(::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file.isOpen()) return errno;
    struct stat status{};
    if (::fstat(file.number(), &status) != 0) return errno;
    if (S_ISDIR(status.st_mode)) return EISDIR;
    if (!S_ISREG(status.st_mode)) return EINVAL;
    return readAll(file.number(), text);
}

int SmallTextFile::replace(const std::string& text, Old old, Link link) const {
    if (text.size() > largestSize) return EFBIG;
    if (path_.empty()) return ENOENT;
    std::string target = path_;
    if (link == Link::followed) {
        if (const int error = followLinks(target)) return error;
    }
    if (const int error = makeFolders(folderOf(target))) return error;

    std::string temporary = target + ".XXXXXX";
    const int file = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (file < 0) return errno;
    int error = writeAndSync(file, text);
    if (error == 0 && old == Old::keptAside) error = keepAside(target);
    if (error == 0 && std::rename(temporary.c_str(), target.c_str()) != 0) error = errno;
    if (error != 0) {
        ::unlink(temporary.c_str());
        return error;
    }
    syncFolder(folderOf(target));
    return 0;
}

}  // namespace kovra
