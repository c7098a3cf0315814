#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
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

// In a mount namespace of its own: what is mounted from here on is seen nowhere else. Where the root is no mount, as in
// a chroot, it is made one, at the root of the namespace; then the process is in no chroot any more, and may have user
// namespaces too. False, with errno, where that is denied.
inline bool keepMountsToItself() {
    const auto apart = [] { return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0; };
    if (apart()) return true;
    if (errno != EINVAL) return false;
    const int root = ::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC);
    const int space = ::open("/proc/self/ns/mnt", O_RDONLY | O_CLOEXEC);
    // Entering the namespace anew leads to its own root.
    if (root < 0 || space < 0 || ::setns(space, CLONE_NEWNS) != 0 || !apart() || ::fchdir(root) != 0) return false;
    const std::string path = std::filesystem::current_path();
    return ::mount(path.c_str(), path.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0 && ::chdir(path.c_str()) == 0 &&
           ::syscall(SYS_pivot_root, ".", ".") == 0 && ::umount2(".", MNT_DETACH) == 0 && ::chdir("/") == 0;
}

// Runs the body in a process that has mounts and processes to itself: /proc shows its own alone, /run is empty, and
// what it mounts or leaves running is gone with it. As root directly, as an ordinary user by a user namespace.
//
// The body is given a user to act with: somebody else for root, and for an ordinary user, who has one number only, the
// one that is root in there.
inline void inPrivateMachine(const std::function<void(uid_t)>& body) {
    const auto must = [](bool done, const char* what) {
        if (!done) throw std::runtime_error(std::string("no private machine: ") + what);
    };
    const auto enter = [&] {
        const uid_t user = ::geteuid();
        const gid_t group = ::getegid();
        constexpr int own = CLONE_NEWNS | CLONE_NEWPID;
        const bool directly = user == 0 && ::unshare(own) == 0;
        if (!directly) {
            must(::unshare(own | CLONE_NEWUSER) == 0, "user namespaces are denied");
            writeFile("/proc/self/setgroups", "deny");
            writeFile("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
            writeFile("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
        }
        must(keepMountsToItself(), "private mounts");
        return directly ? alice : 0;
    };
    const auto live = [&](uid_t user) {
        must(::mount("proc", "/proc", "proc", 0, nullptr) == 0, "/proc");
        must(::mount("tmpfs", "/run", "tmpfs", 0, "mode=755") == 0, "/run");
        body(user);
    };
    // In a process of its own; what it ends with says whether all went well.
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
        if (!fork([&] { live(user); })) ::_exit(1);
    })) << "in a process of its own, see above";
}

}  // namespace kovra::helper
