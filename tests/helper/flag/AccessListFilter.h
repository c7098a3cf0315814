#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <array>
#include <cstddef>

namespace kovra::helper {

// Installs a system call filter that makes the call with this number fail with this error. If the error is 0, the call
// seems to succeed but changes nothing. The filter stays until the process ends. Returns whether it is installed.
inline bool answerCallsWith(unsigned int call, unsigned int error) {
    std::array<sock_filter, 4> program{{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    const sock_fprog filter{program.size(), program.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

// acl_set_fd() changes an access control list by fsetxattr(2).
inline bool answerAccessListsWith(unsigned int error) { return answerCallsWith(SYS_fsetxattr, error); }

}  // namespace kovra::helper
