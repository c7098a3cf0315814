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

// Whether a system call can make a difference to anybody else. In between calls that cannot, being killed is the same.
bool canChangeSomething(std::uint64_t call) {
    switch (call) {
        case SYS_brk:
        case SYS_close:
        case SYS_fgetxattr:
        case SYS_fstat:
        case SYS_futex:
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

// Runs the work in a process that is killed when it is about to make its call number `calls` that can change something;
// the call then does not happen. False where the work was over before.
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
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY && canChangeSomething(info.entry.nr)) --left;
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

// Both users have left "on", and the first one has the flag; or nobody.
void prepare(FlagRig& rig, std::optional<uid_t> first) {
    rig.handOver(alice);
    rig.write(alice, "on");
    rig.handOver(bob);
    rig.write(bob, "on");
    rig.handOver(first);
}

// Every killing of one hand-over, and what is so right after it.
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

// The daemon, started anew: what is in place already is not put there again.
void reopen(FlagRig& rig, std::optional<uid_t> user) {
    rig.reopen();
    if (rig.folder().isFlagOf(user)) return;
    ASSERT_TRUE(rig.handOver(user));
}

TEST(HandOverCrashTest, AtAnyMomentLeavesAFlagThatNobodyMayWriteButTheOneBeforeOrTheNextOne) {
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

TEST(HandOverCrashTest, AtAnyMomentLosesNothingOfWhatUsersLeftAndLeavesNothingBehindOnceTheNextOneIsDone) {
    for (const Change& change : changes) {
        for (const std::optional<uid_t> next : std::set{change.to, change.from}) {
            SCOPED_TRACE("then to " + text({next, next}));
            killEverywhere(change, [&](FlagRig& rig) {
                reopen(rig, next);
                ASSERT_TRUE(rig.folder().isFlagOf(next));
                EXPECT_EQ(rig.isOn(), next.has_value());
                EXPECT_FALSE(rig.names().contains("state.new"));
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
