#include "BLE_kovra/platform/posix/PosixFileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "BLE_kovra/platform/posix/FileDescriptor.h"
#include "BLE_kovra/platform/posix/Refusal.h"

namespace kovra {

namespace {

// Returns 0 or the error number. Continues after a short write, since only the next call reports the reason.
int writeAtStart(int file, std::string_view text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::pwrite(file, text.data() + done, text.size() - done, static_cast<off_t>(done));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return written < 0 ? errno : ENOSPC;
        done += static_cast<std::size_t>(written);
    }
    return 0;
}

int cutTo(int file, std::size_t size) { return ::ftruncate(file, static_cast<off_t>(size)) == 0 ? 0 : errno; }

// Truncates the file before the write, or after it if the file was shorter than the text. So neither step leaves an
// empty file or a wrong "on". Between "off" and "on" a reader may see the fragment "of".
int replaceContent(int file, off_t sizeBefore, std::string_view text) {
    const bool growing = sizeBefore < static_cast<off_t>(text.size());
    if (growing) {
        if (const int error = writeAtStart(file, text)) return error;
        return cutTo(file, text.size());
    }
    if (const int error = cutTo(file, text.size())) return error;
    return writeAtStart(file, text);
}

// Returns 0 or the error number. Some file systems, such as network file systems, report a failed write only when a
// descriptor is closed. Closing a duplicate leaves the file open, so that it can still be truncated.
int closeDuplicate(int file) {
    FileDescriptor duplicate(::fcntl(file, F_DUPFD_CLOEXEC, 0));
    return duplicate.isOpen() ? duplicate.close() : 0;
}

// Returns whether the path still refers to this file.
bool isInPlace(const struct stat& file, const std::string& path) {
    struct stat inPlace{};
    return ::lstat(path.c_str(), &inPlace) == 0 && file.st_dev == inPlace.st_dev && file.st_ino == inPlace.st_ino;
}

// Returns the descriptor, or -1 with errno set.
int openForWriting(const char* path) {
    // Follow no symbolic link, because it could lead to any of the user's files. Do not wait for the reader of a FIFO.
    constexpr int how = O_WRONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC;
    // O_CREAT only for a missing file: in a shared folder the kernel may refuse it for another user's file.
    const int existing = ::open(path, how);
    return existing < 0 && errno == ENOENT ? ::open(path, how | O_CREAT, 0644) : existing;
}

}  // namespace

Outcome PosixFileSystem::writeWholeFile(const std::string& path, std::string_view text) {
    FileDescriptor file(openForWriting(path.c_str()));
    if (!file.isOpen()) return refusal(errno);
    struct stat before{};
    if (::fstat(file.number(), &before) != 0) return refusal(errno);
    if (!S_ISREG(before.st_mode)) return refusal(EINVAL);

    int error = replaceContent(file.number(), before.st_size, text);
    if (error == 0) error = closeDuplicate(file.number());
    // On a full copy-on-write disk even an overwrite fails. Then truncate the file to 0 bytes: its readers interpret an
    // empty file as "off", while the old text may be "on".
    if (error != 0) static_cast<void>(cutTo(file.number(), 0));
    // If another file has replaced this one meanwhile, no reader can find the new text.
    if (error == 0 && !isInPlace(before, path)) error = ESTALE;
    const int errorAtClose = file.close();
    if (error == 0) error = errorAtClose;
    return error == 0 ? Outcome::success() : refusal(error);
}

bool PosixFileSystem::fileExists(const std::string& path) const { return ::access(path.c_str(), F_OK) == 0; }

}  // namespace kovra
