#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <thread>
#include <utility>
#include <vector>

namespace kovra {

// Lets this thread's next calls of one kind fail with these errors, one call after the other. Where the error is 0, and
// after the last one, the kernel makes the call. A number below 0 lets a call do nothing and return the opposite
// number. With a descriptor, only calls count whose first argument it is. Only for a process that ends soon.
inline void failAt(unsigned call, std::vector<int> errors, int descriptor = -1) {
    constexpr int unstarted = -2;
    constexpr int unfiltered = -1;
    static std::atomic<int> calls{unstarted};
    std::thread([errors = std::move(errors)] {
        calls = unfiltered;
        calls.notify_one();
        calls.wait(unfiltered);
        for (std::size_t i = 0;; ++i) {
            seccomp_notif made{};
            if (::ioctl(calls, SECCOMP_IOCTL_NOTIF_RECV, &made) != 0) return;
            const int error = i < errors.size() ? errors[i] : 0;
            seccomp_notif_resp answer{.id = made.id, .val = 0, .error = -error, .flags = 0};
            if (error < 0) answer = {.id = made.id, .val = -error, .error = 0, .flags = 0};
            if (error == 0) answer.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
            ::ioctl(calls, SECCOMP_IOCTL_NOTIF_SEND, &answer);
        }
    }).detach();
    // The start of a thread waits for locks of the sanitizer, which the failing call may hold.
    calls.wait(unstarted);
    std::vector<sock_filter> program;
    const auto require = [&](std::size_t offset, unsigned value) {
        program.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<__u32>(offset)));
        program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 1, 0));
        program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    };
    require(offsetof(seccomp_data, nr), call);
    if (descriptor >= 0) require(offsetof(seccomp_data, args), static_cast<unsigned>(descriptor));
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
    const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    const long made = ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &filter);
    if (made < 0) ::_exit(1);
    calls = static_cast<int>(made);
    calls.notify_one();
}

}  // namespace kovra
