#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

#include "tests/helper/Users.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {

// Makes all mounts in the mount namespace of this process private. If the process runs in a chroot, the folder of the
// chroot becomes the root of the namespace. The kernel creates no user namespace for a process in a chroot. Returns
// false and sets errno if a step fails.
inline bool makeMountsPrivate() {
    const int root = ::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC);
    const int space = ::open("/proc/self/ns/mnt", O_RDONLY | O_CLOEXEC);
    struct stat before{};
    struct stat after{};
    if (root < 0 || space < 0 || ::fstat(root, &before) != 0) return false;
    // setns() changes the root of the process to that of the namespace.
    if (::setns(space, CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return false;
    if (::stat("/", &after) != 0) return false;
    if (before.st_dev == after.st_dev && before.st_ino == after.st_ino) return true;
    if (::fchdir(root) != 0) return false;
    const std::string path = std::filesystem::current_path();
    return ::mount(path.c_str(), path.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0 && ::chdir(path.c_str()) == 0 &&
           ::syscall(SYS_pivot_root, ".", ".") == 0 && ::umount2(".", MNT_DETACH) == 0 && ::chdir("/") == 0;
}

// Runs the body in a child process with mount and PID namespaces of its own: /proc shows only its processes, and /run
// is empty. The kernel removes these mounts and processes when the child ends.
//
// The argument of the body is the UID under which the body runs other processes. If the test runs as root, this is
// Alice's UID. The test of an ordinary user runs in a user namespace, in which 0 is the only UID.
inline void inPrivateMachine(const std::function<void(uid_t)>& body) {
    const auto require = [](bool succeeded, const char* what) {
        if (!succeeded) throw std::runtime_error(std::string("no private machine: ") + what);
    };
    const auto enter = [&] {
        const uid_t user = ::geteuid();
        const gid_t group = ::getegid();
        constexpr int own = CLONE_NEWNS | CLONE_NEWPID;
        const bool directly = user == 0 && ::unshare(own) == 0;
        if (!directly) {
            require(::unshare(own | CLONE_NEWUSER) == 0, "user namespaces are denied");
            writeFile("/proc/self/setgroups", "deny");
            writeFile("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
            writeFile("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
        }
        require(makeMountsPrivate(), "private mounts");
        return directly ? alice : 0;
    };
    const auto mountAndRun = [&](uid_t user) {
        require(::mount("proc", "/proc", "proc", 0, nullptr) == 0, "/proc");
        require(::mount("tmpfs", "/run", "tmpfs", 0, "mode=755") == 0, "/run");
        body(user);
    };
    const auto fork = [](const std::function<void()>& work) {
        std::fflush(nullptr);
        const pid_t process = ::fork();
        if (process != 0) {
            int status = -1;
            while (::waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
            return WIFEXITED(status) && WEXITSTATUS(status) == 0;
        }
        try {
            work();
        } catch (const std::exception& error) {
            ADD_FAILURE() << error.what();
        }
        std::fflush(nullptr);
        ::_exit(::testing::Test::HasFailure() ? 1 : 0);
    };
    EXPECT_TRUE(fork([&] {
        const uid_t user = enter();
        if (!fork([&] { mountAndRun(user); })) ::_exit(1);
    })) << "in the child process, see above";
}

}  // namespace kovra::helper
