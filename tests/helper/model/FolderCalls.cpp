// The system calls of the helper about folders and their entries, and about access lists. They are the kernel's, below
// the machine's root.

#include <acl/libacl.h>
#include <dirent.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>

#include "tests/helper/model/Calls.h"
#include "tests/helper/model/Machine.h"

namespace kovra::helper::model {

extern "C" {

int __real_linkat(int from, const char* old, int to, const char* name, int flags);
int __wrap_linkat(int from, const char* old, int to, const char* name, int flags);
int __wrap_linkat(int from, const char* old, int to, const char* name, int flags) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_linkat(from, old, to, name, flags);
    entry->expectAlive("the flag is handed over");
    const int error = startChange(entry, entry->pathOf(to), true);
    return error != 0 ? failWith(error) : __real_linkat(from, old, to, name, flags);
}

int __real_renameat(int from, const char* old, int to, const char* name);
int __wrap_renameat(int from, const char* old, int to, const char* name);
int __wrap_renameat(int from, const char* old, int to, const char* name) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_renameat(from, old, to, name);
    entry->expectAlive("the flag is handed over");
    const int error = startChange(entry, entry->pathOf(to), false);
    return error != 0 ? failWith(error) : __real_renameat(from, old, to, name);
}

int __real_renameat2(int from, const char* old, int to, const char* name, unsigned flags);
int __wrap_renameat2(int from, const char* old, int to, const char* name, unsigned flags);
int __wrap_renameat2(int from, const char* old, int to, const char* name, unsigned flags) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_renameat2(from, old, to, name, flags);
    const int error = startChange(entry, entry->pathOf(to), false);
    return error != 0 ? failWith(error) : __real_renameat2(from, old, to, name, flags);
}

int __real_unlinkat(int folder, const char* name, int flags);
int __wrap_unlinkat(int folder, const char* name, int flags);
int __wrap_unlinkat(int folder, const char* name, int flags) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_unlinkat(folder, name, flags);
    const int error = startChange(entry, entry->pathOf(folder), false);
    return error != 0 ? failWith(error) : __real_unlinkat(folder, name, flags);
}

int __real_unlink(const char* path);
int __wrap_unlink(const char* path);
int __wrap_unlink(const char* path) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_unlink(path);
    const std::string file = entry->mapped(path);
    const int error = startChange(entry, file, false);
    return error != 0 ? failWith(error) : __real_unlink(file.c_str());
}

int __real_mkdir(const char* path, mode_t mode);
int __wrap_mkdir(const char* path, mode_t mode);
int __wrap_mkdir(const char* path, mode_t mode) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_mkdir(path, mode);
    const std::string file = entry->mapped(path);
    const int error = startChange(entry, file, true);
    return error != 0 ? failWith(error) : __real_mkdir(file.c_str(), mode);
}

int __real_mkdirat(int folder, const char* name, mode_t mode);
int __wrap_mkdirat(int folder, const char* name, mode_t mode);
int __wrap_mkdirat(int folder, const char* name, mode_t mode) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_mkdirat(folder, name, mode);
    const int error = startChange(entry, entry->pathOf(folder), true);
    return error != 0 ? failWith(error) : __real_mkdirat(folder, name, mode);
}

int __real_access(const char* path, int mode);
int __wrap_access(const char* path, int mode);
int __wrap_access(const char* path, int mode) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_access(path, mode);
    return std::string_view(path).starts_with("/sys/") ? 0 : __real_access(entry->mapped(path).c_str(), mode);
}

DIR* __real_opendir(const char* path);
DIR* __wrap_opendir(const char* path);
DIR* __wrap_opendir(const char* path) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_opendir(path);
    entry->expectAlive("all processes are searched");
    errno = EMFILE;
    return entry->hasNoDescriptors || entry->isDead() ? nullptr : __real_opendir(entry->mapped(path).c_str());
}

DIR* __real_fdopendir(int descriptor);
DIR* __wrap_fdopendir(int descriptor);
DIR* __wrap_fdopendir(int descriptor) {
    const Entry entry;
    if (entry.isFromHelper()) entry->files.erase(descriptor);  // it belongs to the result from now on
    return __real_fdopendir(descriptor);
}

int __real_acl_set_fd(int descriptor, acl_t list);
int __wrap_acl_set_fd(int descriptor, acl_t list);
int __wrap_acl_set_fd(int descriptor, acl_t list) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_acl_set_fd(descriptor, list);
    const int error = startChange(entry, entry->pathOf(descriptor), false);
    return error != 0 ? failWith(error) : __real_acl_set_fd(descriptor, list);
}

}  // extern "C"

}  // namespace kovra::helper::model
