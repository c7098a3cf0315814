#include <gtest/gtest.h>
#include <sys/mount.h>

#include "helper/Daemon.h"
#include "tests/helper/DaemonRig.h"
#include "tests/helper/PrivateMachine.h"
#include "tests/helper/RunUntil.h"

namespace kovra::helper {
namespace {

constexpr const char* mouse = "input7";

// A muted pad. The flag's folder is a file system of its own, which the tests make read-only.
class MutedByADisk {
  public:
    explicit MutedByADisk(uid_t user) {
        rig.computer.addDevice({.input = mouse, .name = "Mouse", .properties = "ID_INPUT=1\nID_INPUT_MOUSE=1\n"});
        EXPECT_EQ(::mount("tmpfs", path.c_str(), "tmpfs", 0, "size=64k,mode=755"), 0);
        rig.start();
        rig.switchTo(user);
        rig.flag.write(user, "on");
        EXPECT_TRUE(rig.becomes("1"));
    }
    ~MutedByADisk() { ::umount2(path.c_str(), MNT_DETACH); }

    // Makes the file system read-only without any event, as the kernel does after an I/O error.
    void becomeReadOnly() const { remount(MS_RDONLY); }
    void becomeWritable() const { remount(0); }

    DaemonRig rig;

  private:
    void remount(unsigned long how) const {
        EXPECT_EQ(::mount("none", path.c_str(), nullptr, MS_REMOUNT | how, nullptr), 0);
    }

    const std::string path = rig.flag.path();
};

// On a read-only file system the application cannot write "off" when the mouse is unplugged.
TEST(DaemonReadOnlyTest, UnmutesThePadWhenADeviceIsUnplugged) {
    inPrivateMachine([](uid_t user) {
        MutedByADisk muted(user);
        muted.becomeReadOnly();
        EXPECT_TRUE(muted.rig.is("1"));
        muted.rig.computer.unplug(mouse);
        EXPECT_TRUE(muted.rig.becomes("0"));
        EXPECT_EQ(muted.rig.flag.content(), "on");
    });
}

TEST(DaemonReadOnlyTest, MutesAgainOnceTheDiskIsWritable) {
    inPrivateMachine([](uid_t user) {
        MutedByADisk muted(user);
        muted.becomeReadOnly();
        muted.rig.daemon->evaluate();
        EXPECT_TRUE(muted.rig.is("0"));
        muted.becomeWritable();
        muted.rig.flag.write(user, "on");
        EXPECT_TRUE(muted.rig.becomes("1"));
    });
}

}  // namespace
}  // namespace kovra::helper
