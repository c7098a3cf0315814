#include "BLE_kovra/platform/linux/session/NotedFiles.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>

#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

namespace {

using namespace std::chrono_literals;

// How coarse the times of files may be. FAT has the coarsest. A file that changes twice within this time may keep its
// state.
constexpr auto coarsestTime = 2s;

bool isMissing(int error) { return error == ENOENT || error == ENOTDIR; }

// Opens the path without access to the file's content. Since Linux 5.12, RESOLVE_CACHED fails with EAGAIN where the
// kernel would have to ask a disk or a server. glibc has no function for this system call.
FileDescriptor openPath(const std::string& path, bool inMemory) {
    open_how how{};
    how.flags = O_PATH | O_CLOEXEC;
    how.resolve = inMemory ? RESOLVE_CACHED : 0;
    return FileDescriptor(static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how)));
}

}  // namespace

std::chrono::nanoseconds NotedFiles::realTime() {
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

void NotedFiles::note(const std::string& path) {
    std::optional<State> state;
    const int error = look(path, Lookup::anywhere, state);
    const bool isSettled = !state || state->changed + coarsestTime <= now_();
    areReliable_ = areReliable_ && (error == 0 || isMissing(error)) && isSettled;
    files_.push_back({path, state});
}

bool NotedFiles::areUnchanged() const {
    return areReliable_ && !files_.empty() && std::ranges::all_of(files_, [](const File& file) {
               std::optional<State> state;
               const int error = look(file.path, Lookup::inMemory, state);
               return (error == 0 || isMissing(error)) && state == file.state;
           });
}

// Returns an error number, or zero and the state of the file.
int NotedFiles::look(const std::string& path, Lookup lookup, std::optional<State>& state) {
    const bool inMemory = lookup == Lookup::inMemory;
    const FileDescriptor file = openPath(path, inMemory);
    if (!file.isOpen()) return errno;
    struct statx found{};
    const int flags = AT_EMPTY_PATH | (inMemory ? AT_STATX_DONT_SYNC : AT_STATX_SYNC_AS_STAT);
    if (::statx(file.number(), "", flags, STATX_INO | STATX_SIZE | STATX_CTIME, &found) != 0) return errno;
    state = State{found.stx_dev_major, found.stx_dev_minor, found.stx_ino, found.stx_size,
                  std::chrono::seconds(found.stx_ctime.tv_sec) + std::chrono::nanoseconds(found.stx_ctime.tv_nsec)};
    return 0;
}

}  // namespace kovra
