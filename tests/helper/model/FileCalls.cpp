// The system calls of the helper about open files. Files are the kernel's, below the machine's root; the attributes of
// input devices are the machine's.

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/helper/model/Calls.h"
#include "tests/helper/model/Machine.h"

namespace kovra::helper::model {

namespace {

using FileKind = OpenFile::Kind;

constexpr std::string_view attributes = "/sys/class/input/";
constexpr std::string_view terminal = "/sys/class/tty/tty0/active";

int openAttribute(const Entry& machine, const std::string& path, int flags) {
    const std::string name = path.substr(attributes.size(), path.rfind('/') - attributes.size());
    const auto device = machine->devices.find(name);
    if (device == machine->devices.end()) return failWith(ENOENT);
    const bool isRoot = machine->process().option == "--grant";
    if ((flags & O_WRONLY) != 0 && !device->second.isGranted && !isRoot) return failWith(EACCES);
    return machine->newDescriptor({.kind = FileKind::attribute, .path = name, .members = {}});
}

Device* deviceOf(const Entry& machine, int descriptor) {
    const auto found = machine->devices.find(machine->pathOf(descriptor));
    return found == machine->devices.end() ? nullptr : &found->second;
}

ssize_t writeAttribute(const Entry& machine, int descriptor, char value) {
    if (machine->diesHere()) throw Killed();
    Device* device = deviceOf(machine, descriptor);
    if (device == nullptr) return failWith(ENODEV);
    const bool inhibits = value == '1';
    device->couldNotWork = device->isInhibited && !inhibits && device->refusesToWork;
    if (device->couldNotWork) return failWith(EIO);
    if (!device->isInhibited && inhibits && device->refusesToPause) return failWith(EIO);
    if (device->isInhibited && !device->isInhibitedByHelper)
        machine->wrongs.push_back("the helper writes the attribute of " + device->input + ", inhibited by others");
    if (inhibits && !machine->records().contains(device->input))
        machine->wrongs.push_back("the helper mutes " + device->input + " without a record");
    device->isInhibited = device->isInhibitedByHelper = inhibits;
    return 1;
}

FileKind kindOf(const Entry& machine, int descriptor) {
    const auto found = machine->files.find(descriptor);
    return found == machine->files.end() ? FileKind::file : found->second.kind;
}

int keep(const Entry& machine, int descriptor, const std::string& path) {
    if (descriptor >= 0) machine->files[descriptor] = {.path = path, .members = {}};
    return descriptor;
}

// Queues of events that the helper has closed. To close one takes the kernel tens of milliseconds on a busy machine, so
// that they are used again, without their watches and events.
struct EventQueues {
    std::map<int, std::set<int>> watches;  // of each open queue
    std::vector<int> closed;
};
EventQueues& eventQueues() {
    static EventQueues queues;
    return queues;
}

void reuseLater(int events) {
    for (const int watch : eventQueues().watches[events]) ::inotify_rm_watch(events, watch);
    eventQueues().watches.erase(events);
    std::array<char, 16'384> waiting{};
    while (::read(events, waiting.data(), waiting.size()) > 0) continue;
    eventQueues().closed.push_back(events);
}

bool isWriting(int flags) { return (flags & (O_WRONLY | O_RDWR | O_CREAT)) != 0; }

}  // namespace

extern "C" {

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
    const Entry entry;
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    if (!entry.isFromHelper()) return __real_open(path, flags, mode);
    endIfDead(entry);
    const std::string name = path;
    if (entry->hasNoDescriptors) {
        for (auto& [input, device] : entry->devices) device.couldNotWork = true;
        return failWith(EMFILE);
    }
    if (name.starts_with(attributes)) return openAttribute(entry, name, flags);
    if (name == terminal) {
        if (entry->shownTerminal == 0) return failWith(ENOENT);
        return entry->newDescriptor({.kind = FileKind::terminal, .path = name, .members = {}});
    }
    constexpr std::string_view descriptors = "/proc/self/fd/";
    const bool isAgain = name.starts_with(descriptors);
    const std::string file = isAgain ? entry->pathOf(std::stoi(name.substr(descriptors.size()))) : entry->mapped(name);
    if ((flags & O_CREAT) != 0) {
        const bool exists = ::access(file.c_str(), F_OK) == 0;
        if (const int error = startChange(entry, file, !exists)) return failWith(error);
        endIfDead(entry);
    } else if (isWriting(flags) && entry->fault(file, false) != 0) {
        return failWith(entry->fault(file, false));
    }
    return keep(entry, __real_open(isAgain ? path : file.c_str(), flags, mode), file);
}

int __real_openat(int folder, const char* name, int flags, ...);
int __wrap_openat(int folder, const char* name, int flags, ...);
int __wrap_openat(int folder, const char* name, int flags, ...) {
    const Entry entry;
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    if (!entry.isFromHelper()) return __real_openat(folder, name, flags, mode);
    endIfDead(entry);
    if (entry->hasNoDescriptors) return failWith(EMFILE);
    const std::string_view last = name;
    const std::string path = last == "." ? entry->pathOf(folder) : entry->pathOf(folder) + "/" + name;
    if ((flags & O_CREAT) != 0) {
        const bool exists = ::access(path.c_str(), F_OK) == 0;
        const int error = startChange(entry, path, !exists);
        endIfDead(entry);
        if (error != 0) return failWith(error);
    }
    return keep(entry, __real_openat(folder, name, flags, mode), path);
}

int __real_close(int descriptor);
int __wrap_close(int descriptor);
int __wrap_close(int descriptor) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_close(descriptor);
    entry->files.erase(descriptor);
    if (!eventQueues().watches.contains(descriptor)) return __real_close(descriptor);
    reuseLater(descriptor);
    return 0;
}

ssize_t __real_read(int descriptor, void* bytes, std::size_t size);
ssize_t __wrap_read(int descriptor, void* bytes, std::size_t size);
ssize_t __wrap_read(int descriptor, void* bytes, std::size_t size) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_read(descriptor, bytes, size);
    endIfDead(entry);
    switch (kindOf(entry, descriptor)) {
        case FileKind::attribute: {
            const Device* device = deviceOf(entry, descriptor);
            if (device == nullptr) return failWith(ENODEV);
            *static_cast<char*>(bytes) = device->isInhibited ? '1' : '0';
            return 1;
        }
        case FileKind::clock:
            return failWith(std::exchange(entry->clockHasJumped, false) ? ECANCELED : EAGAIN);
        default:
            return __real_read(descriptor, bytes, size);
    }
}

ssize_t __real_pread(int descriptor, void* bytes, std::size_t size, off_t at);
ssize_t __wrap_pread(int descriptor, void* bytes, std::size_t size, off_t at);
ssize_t __wrap_pread(int descriptor, void* bytes, std::size_t size, off_t at) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_pread(descriptor, bytes, size, at);
    endIfDead(entry);
    if (kindOf(entry, descriptor) != FileKind::terminal) return __real_pread(descriptor, bytes, size, at);
    entry->hasTerminalEvent = false;
    const std::string text = "tty" + std::to_string(entry->shownTerminal) + "\n";
    return static_cast<ssize_t>(text.copy(static_cast<char*>(bytes), size));
}

ssize_t __real_write(int descriptor, const void* bytes, std::size_t size);
ssize_t __wrap_write(int descriptor, const void* bytes, std::size_t size);
ssize_t __wrap_write(int descriptor, const void* bytes, std::size_t size) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_write(descriptor, bytes, size);
    endIfDead(entry);
    const std::string_view text(static_cast<const char*>(bytes), size);
    if (descriptor == STDERR_FILENO) {
        entry->process().log.emplace_back(text);
        // The filter of repeated lines is shared, see Machine::run().
        Process* daemon = entry->daemon();
        if (daemon != nullptr && daemon != &entry->process()) daemon->log.emplace_back();
        return static_cast<ssize_t>(size);
    }
    if (kindOf(entry, descriptor) == FileKind::attribute) return writeAttribute(entry, descriptor, text.front());
    const int error = startChange(entry, entry->pathOf(descriptor), true);
    endIfDead(entry);
    return error != 0 ? failWith(error) : __real_write(descriptor, bytes, size);
}

ssize_t __real_pwrite(int descriptor, const void* bytes, std::size_t size, off_t at);
ssize_t __wrap_pwrite(int descriptor, const void* bytes, std::size_t size, off_t at);
ssize_t __wrap_pwrite(int descriptor, const void* bytes, std::size_t size, off_t at) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_pwrite(descriptor, bytes, size, at);
    const int error = startChange(entry, entry->pathOf(descriptor), true);
    endIfDead(entry);
    return error != 0 ? failWith(error) : __real_pwrite(descriptor, bytes, size, at);
}

int __real_ftruncate(int descriptor, off_t size);
int __wrap_ftruncate(int descriptor, off_t size);
int __wrap_ftruncate(int descriptor, off_t size) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_ftruncate(descriptor, size);
    const int error = startChange(entry, entry->pathOf(descriptor), false);
    return error != 0 ? failWith(error) : __real_ftruncate(descriptor, size);
}

int __real_fstat(int descriptor, struct stat* status);
int __wrap_fstat(int descriptor, struct stat* status);
int __wrap_fstat(int descriptor, struct stat* status) {
    const Entry entry;
    const int result = __real_fstat(descriptor, status);
    if (!entry.isFromHelper() || result != 0) return result;
    const auto written = entry->writes.find(status->st_ino);
    if (written == entry->writes.end()) return result;
    const auto seconds = std::chrono::floor<std::chrono::seconds>(written->second);
    status->st_mtim = {seconds.count(), (written->second - seconds).count()};
    return result;
}

int __real_fstatvfs(int descriptor, struct statvfs* disk);
int __wrap_fstatvfs(int descriptor, struct statvfs* disk);
int __wrap_fstatvfs(int descriptor, struct statvfs* disk) {
    const Entry entry;
    const int result = __real_fstatvfs(descriptor, disk);
    if (entry.isFromHelper() && entry->diskIsReadOnly) disk->f_flag |= ST_RDONLY;
    return result;
}

int __real_inotify_init1(int flags);
int __wrap_inotify_init1(int flags);
int __wrap_inotify_init1(int flags) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_inotify_init1(flags);
    if (entry->hasNoDescriptors || entry->isDead()) return failWith(EMFILE);
    auto& closed = eventQueues().closed;
    const int events = closed.empty() ? __real_inotify_init1(flags) : closed.back();
    if (!closed.empty()) closed.pop_back();
    eventQueues().watches[events];
    return keep(entry, events, "inotify");
}

int __real_inotify_add_watch(int events, const char* path, std::uint32_t mask);
int __wrap_inotify_add_watch(int events, const char* path, std::uint32_t mask);
int __wrap_inotify_add_watch(int events, const char* path, std::uint32_t mask) {
    const Entry entry;
    if (entry.isFromHelper() && entry->hasNoWatches) return failWith(ENOSPC);
    const int watch = __real_inotify_add_watch(events, path, mask);
    if (entry.isFromHelper() && watch >= 0) eventQueues().watches[events].insert(watch);
    return watch;
}

int __real_poll(pollfd* events, nfds_t count, int timeout);
int __wrap_poll(pollfd* events, nfds_t count, int timeout);
int __wrap_poll(pollfd* events, nfds_t count, int timeout) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_poll(events, count, timeout);
    if (events->fd == STDERR_FILENO) return 1;
    return entry->isReadable(events->fd) ? 1 : 0;
}

long __real_syscall(long number, ...);
long __wrap_syscall(long number, ...);
long __wrap_syscall(long number, ...) {
    const Entry entry;
    va_list more;
    va_start(more, number);
    const long first = va_arg(more, long);
    const long second = va_arg(more, long);
    const long third = va_arg(more, long);
    const long fourth = va_arg(more, long);
    va_end(more);
    if (!entry.isFromHelper() || number != SYS_pidfd_open) return __real_syscall(number, first, second, third, fourth);
    const auto process = static_cast<pid_t>(first);
    if (entry->hasNoDescriptors || entry->isDead()) return failWith(EMFILE);
    if (!entry->people.contains(process)) return failWith(ESRCH);
    return entry->newDescriptor({.kind = FileKind::process, .path = "pidfd", .process = process, .members = {}});
}

// Only for --grant, which gives attributes to the helper's group.
int __real_fchown(int descriptor, uid_t user, gid_t group);
int __wrap_fchown(int descriptor, uid_t user, gid_t group);
int __wrap_fchown(int descriptor, uid_t user, gid_t group) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_fchown(descriptor, user, group);
    return entry->diesHere() ? failWith(EIO) : 0;
}

int __real_fchmod(int descriptor, mode_t mode);
int __wrap_fchmod(int descriptor, mode_t mode);
int __wrap_fchmod(int descriptor, mode_t mode) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_fchmod(descriptor, mode);
    if (entry->diesHere()) return failWith(EIO);
    Device* device = deviceOf(entry, descriptor);
    if (device == nullptr) return failWith(ENODEV);
    device->isGranted = (mode & S_IWGRP) != 0;
    return 0;
}

}  // extern "C"

}  // namespace kovra::helper::model
