#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "helper/Descriptor.h"
#include "helper/flag/HandOver.h"
#include "tests/helper/Users.h"
#include "tests/helper/flag/FlagRig.h"

namespace kovra::helper {
namespace {

using Names = std::set<std::string>;

// Returns whether a system call may have an effect outside the process. A kill before a call without such an effect has
// the same result as a kill after it.
bool hasOutsideEffect(const __ptrace_syscall_info& info) {
    switch (info.entry.nr) {
        case SYS_openat:
            return (info.entry.args[2] & O_CREAT) != 0;
        case SYS_brk:
        case SYS_close:
        case SYS_fgetxattr:
        case SYS_fstat:
        case SYS_futex:
        case SYS_getdents64:
        case SYS_getpid:
        case SYS_mmap:
        case SYS_munmap:
        case SYS_newfstatat:
        case SYS_pread64:
        case SYS_read:
            return false;
        default:
            return true;
    }
}

// Runs the work in a child process. Kills the process after this number of system calls with an effect outside it,
// before the next one. Returns false if the work ends earlier.
bool killedAt(int calls, const std::function<void()>& work) {
    const pid_t process = ::fork();
    if (process == 0) {
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
        work();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(process, &status, 0);
    ::ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    for (int left = calls; left >= 0;) {
        ::ptrace(PTRACE_SYSCALL, process, nullptr, nullptr);
        ::waitpid(process, &status, 0);
        if (WIFEXITED(status)) return false;
        if (!WIFSTOPPED(status) || WSTOPSIG(status) != (SIGTRAP | 0x80)) throw std::runtime_error("an odd stop");
        __ptrace_syscall_info info{};
        if (::ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info) < 0) throw std::runtime_error("no call");
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY && hasOutsideEffect(info)) --left;
    }
    ::kill(process, SIGKILL);
    ::waitpid(process, &status, 0);
    return true;
}

struct Change {
    std::optional<uid_t> from;
    std::optional<uid_t> to;
};

std::string text(const Change& change) {
    const auto name = [](std::optional<uid_t> user) { return user ? std::to_string(*user) : "nobody"; };
    return "from " + name(change.from) + " to " + name(change.to);
}

// Lets Alice and Bob write "on", one after the other. Then hands the flag over to `first`, or to nobody.
void prepare(FlagRig& rig, std::optional<uid_t> first) {
    rig.handOver(alice);
    rig.write(alice, "on");
    rig.handOver(bob);
    rig.write(bob, "on");
    rig.handOver(first);
}

// Repeats the hand-over, each time in a new folder and killed one system call later. Checks the folder each time.
void killEverywhere(const Change& change, const std::function<void(FlagRig&)>& check) {
    SCOPED_TRACE(text(change));
    int kills = 0;
    for (bool isKilled = true; isKilled; ++kills) {
        SCOPED_TRACE("killed at call " + std::to_string(kills));
        FlagRig rig;
        prepare(rig, change.from);
        const Descriptor folder(::open(rig.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        isKilled = killedAt(kills, [&] { handOverFlag(folder.number(), ::geteuid(), change.to); });
        check(rig);
        if (::testing::Test::HasFailure()) return;
    }
    EXPECT_GT(kills, 6);
}

const std::vector<Change> changes = {{alice, bob}, {bob, alice}, {alice, {}}, {{}, alice}, {alice, alice}, {{}, {}}};

// Opens the folder again, and hands the flag over unless it already belongs to the user. A restarted daemon does the
// same.
void restart(FlagRig& rig, std::optional<uid_t> user) {
    rig.reopen();
    if (rig.folder().isFlagOf(user)) return;
    ASSERT_TRUE(rig.handOver(user));
}

TEST(HandOverCrashTest, AtAnyStepLeavesAFlagThatOnlyTheOldOrTheNewUserMayWrite) {
    for (const Change& change : changes) {
        killEverywhere(change, [&](FlagRig& rig) {
            EXPECT_NE(rig.content(), "missing");
            for (const uid_t user : {alice, bob, bob + 1}) {
                const bool isOneOfThem = user == change.from || user == change.to;
                EXPECT_TRUE(isOneOfThem || !mayWrite(user, rig.state())) << user;
            }
            const bool isOneOfTheirs = rig.folder().isFlagOf(change.from) || rig.folder().isFlagOf(change.to);
            EXPECT_TRUE(isOneOfTheirs || rig.folder().isFlagOf(std::nullopt));
            EXPECT_TRUE(isOneOfTheirs || !rig.isOn());
        });
    }
}

TEST(HandOverCrashTest, AtAnyStepLosesNoContentAndTheNextHandOverCleansUp) {
    for (const Change& change : changes) {
        for (const std::optional<uid_t> next : std::set{change.to, change.from}) {
            SCOPED_TRACE("then to " + text({next, next}));
            killEverywhere(change, [&](FlagRig& rig) {
                restart(rig, next);
                ASSERT_TRUE(rig.folder().isFlagOf(next));
                EXPECT_EQ(rig.isOn(), next.has_value());
                EXPECT_FALSE(rig.names().contains("state.new"));
                for (const uid_t user : {alice, bob}) {
                    const std::string left = rig.path("state.left." + std::to_string(user));
                    EXPECT_TRUE(readFile(left) == "missing" || !mayWrite(user, left)) << user;
                }
                ASSERT_TRUE(rig.handOver(alice));
                EXPECT_TRUE(rig.isOn());
                EXPECT_EQ(rig.names(), (Names{"state", "state.left.61002"}));
                ASSERT_TRUE(rig.handOver(bob));
                EXPECT_TRUE(rig.isOn());
                EXPECT_EQ(rig.names(), (Names{"state", "state.left.61001"}));
            });
        }
    }
}

}  // namespace
}  // namespace kovra::helper
