#include "helper/Daemon.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <set>
#include <string>

#include "tests/helper/DaemonRig.h"
#include "tests/support/linux/FailingCalls.h"
#include "tests/support/posix/InAChild.h"

namespace kovra::helper {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

class DaemonTest : public testing::Test {
  protected:
    DaemonRig rig;
};

TEST_F(DaemonTest, MutesThePadWithItsTwinWhileTheFlagSaysOn) {
    rig.start();
    rig.switchTo(alice);
    EXPECT_TRUE(rig.is("0"));
    rig.flag.write(alice, "on");
    EXPECT_TRUE(rig.becomes("1"));
    EXPECT_EQ(rig.recordedPads(), (Names{"input4", "input5"}));
    rig.flag.write(alice, "off");
    EXPECT_TRUE(rig.becomes("0"));
    EXPECT_EQ(rig.recordedPads(), Names());
}

TEST_F(DaemonTest, MutesAtItsStartIfTheFlagIsOnAlready) {
    rig.startMuted();
    rig.kill();
    EXPECT_TRUE(rig.release());
    ASSERT_TRUE(rig.is("0"));
    rig.start();
    EXPECT_TRUE(rig.is("1"));
}

TEST_F(DaemonTest, MutesOnlyBuiltInPadsAndTheirTwins) {
    const Names others{"input21", "input22", "input23", "input24"};
    rig.computer.addDevice({.input = "input21", .name = "Magic Trackpad", .bus = "0005", .vendor = "05ac"});
    rig.computer.addDevice({.input = "input22",
                            .name = "USB Optical Mouse",
                            .properties = "ID_INPUT=1\nID_INPUT_MOUSE=1\n",
                            .bus = "0003"});
    rig.computer.addDevice({.input = "input23",
                            .name = "TPPS/2 IBM TrackPoint",
                            .properties = "ID_INPUT=1\nID_INPUT_MOUSE=1\nID_INPUT_POINTINGSTICK=1\n",
                            .bus = "0011"});
    rig.computer.addDevice({.input = "input24",
                            .name = "ELAN Touchscreen",
                            .properties = "ID_INPUT=1\nID_INPUT_TOUCHSCREEN=1\n",
                            .hid = pad.hid});
    rig.startMuted();
    for (const std::string& other : others) EXPECT_EQ(rig.computer.inhibited(other), "0") << other;
    EXPECT_EQ(rig.recordedPads(), (Names{"input4", "input5"}));
}

TEST_F(DaemonTest, MutesAPadThatComesBackUnderAnotherNumber) {
    rig.startMuted();
    rig.computer.unplug("input5");
    MockInput again = pad;
    again.input = "input31";
    rig.computer.plug(again);
    EXPECT_TRUE(rig.flag.runUntil([&] { return rig.computer.inhibited("input31") == "1"; }));
    EXPECT_TRUE(rig.flag.runUntil([&] { return rig.recordedPads() == (Names{"input31", "input4"}); }));
    rig.flag.write(alice, "off");
    EXPECT_TRUE(rig.flag.runUntil([&] { return rig.computer.inhibited("input31") == "0"; }));
}

// Lets the timer expire that shows when the clock was set. The test must not set the clock of its machine.
bool expireTheTimerOfTheClock() {
    for (const auto& descriptor : fs::directory_iterator("/proc/self/fdinfo")) {
        if (readFile(descriptor.path()).find("\nsettime flags: 03\n") == std::string::npos) continue;
        const int timer = std::stoi(descriptor.path().filename());
        const itimerspec atOnce{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_nsec = 1}};
        failAt(SYS_read, {ECANCELED}, timer);
        return ::timerfd_settime(timer, 0, &atOnce, nullptr) == 0;
    }
    return false;
}

// The clock is also set after the machine has slept.
TEST_F(DaemonTest, MutesAPadThatCameWhileTheMachineSlept) {
    EXPECT_TRUE(holdsInAChild([] {
        DaemonRig own;
        own.startMuted();
        MockInput another = pad;
        another.input = "input31";
        own.computer.addDevice(another);
        return expireTheTimerOfTheClock() &&
               own.flag.runUntil([&] { return own.computer.inhibited("input31") == "1"; });
    }));
}

TEST_F(DaemonTest, DoesNotMuteAPadThatAppearsWhileNothingIsMuted) {
    rig.start();
    rig.switchTo(alice);
    MockInput another = pad;
    another.input = "input31";
    rig.computer.plug(another);
    ASSERT_TRUE(rig.flag.runUntil([&] { return rig.touchpads->inputs().size() == 3; }));
    EXPECT_EQ(rig.computer.inhibited("input31"), "0");
}

TEST_F(DaemonTest, LeavesAPadAloneThatAnotherProgramHasInhibited) {
    rig.computer.inhibit("input5", "1");
    rig.start();
    rig.switchTo(alice);
    rig.flag.write(alice, "on");
    EXPECT_TRUE(rig.becomes("1"));
    rig.flag.write(alice, "off");
    EXPECT_TRUE(rig.flag.runUntil([&] { return rig.computer.inhibited("input4") == "0"; }));
    EXPECT_EQ(rig.computer.inhibited("input5"), "1");
}

TEST_F(DaemonTest, DoesNotMuteWhatItCannotRecord) {
    rig.start();
    rig.switchTo(alice);
    writeFile(rig.runtime(), "a file in the way");
    rig.flag.write(alice, "on");
    rig.awaitLook();
    EXPECT_TRUE(rig.is("0"));
}

TEST_F(DaemonTest, WritesTheFlagOnlyToHandItOver) {
    rig.startMuted();
    struct stat before{};
    ASSERT_EQ(::stat(rig.flag.state().c_str(), &before), 0);
    rig.kill();
    EXPECT_TRUE(rig.release());
    rig.start();
    rig.endApplication(alice);
    rig.awaitLook();
    struct stat after{};
    ASSERT_EQ(::stat(rig.flag.state().c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    rig.switchTo(bob);
    ASSERT_EQ(::stat(rig.flag.state().c_str(), &after), 0);
    EXPECT_NE(after.st_ino, before.st_ino);
}

TEST_F(DaemonTest, UnmutesThePadAndFailsWhenTheFlagsFolderIsLost) {
    rig.startMuted();
    fs::rename(rig.flag.path(), rig.flag.root() + "/gone");
    EXPECT_TRUE(rig.flag.runUntil([&] { return rig.daemon->hasFailed(); }));
    EXPECT_TRUE(rig.is("0"));
    rig.switchTo(alice);
    EXPECT_TRUE(rig.is("0"));
}

TEST_F(DaemonTest, LeavesAListOfMutedPadsWhenItIsKilled) {
    rig.startMuted();
    rig.kill();
    ASSERT_TRUE(rig.is("1"));
    EXPECT_TRUE(rig.release());
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.recordedPads(), Names());
}

TEST_F(DaemonTest, UnmutesAtItsStartWhatAnEarlierProcessHasLeft) {
    rig.startMuted();
    rig.kill();
    rig.activeUser = std::nullopt;
    rig.start();
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.recordedPads(), Names());
}

}  // namespace
}  // namespace kovra::helper
