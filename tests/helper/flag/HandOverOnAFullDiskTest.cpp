#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <set>
#include <string>

#include "helper/Descriptor.h"
#include "tests/helper/PrivateMachine.h"
#include "tests/helper/Users.h"
#include "tests/helper/flag/FlagRig.h"

namespace kovra::helper {
namespace {

using Names = std::set<std::string>;

// A small file system for the flag's folder. The flag belongs to this user and has the content "on".
class SmallDisk {
  public:
    explicit SmallDisk(uid_t user) {
        const std::string folder = rig.path();
        if (::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=64k,nr_inodes=16,mode=755") != 0) {
            throw std::runtime_error("no small disk");
        }
        if (!rig.handOver(user)) throw std::runtime_error("no flag");
        rig.write(user, "on");
    }
    ~SmallDisk() { ::umount2(rig.path().c_str(), MNT_DETACH); }

    void fillWithBytes() { fill("bytes", std::string(1 << 20, 'x')); }
    void fillWithFiles() {
        for (int i = 0; i < 16; ++i) fill("file" + std::to_string(i), "");
    }
    void empty() {
        for (const std::string& name : fillers_) std::remove(rig.path(name).c_str());
        fillers_.clear();
    }
    Names names() const {
        Names names = rig.names();
        for (const std::string& name : fillers_) names.erase(name);
        return names;
    }

    FlagRig rig;

  private:
    void fill(const std::string& name, const std::string& text) {
        std::ofstream(rig.path(name)) << text;
        fillers_.insert(name);
    }

    Names fillers_;
};

std::string left(uid_t user) { return "state.left." + std::to_string(user); }

TEST(HandOverOnAFullDiskTest, RevokesTheRightAndLosesNoContent) {
    inPrivateMachine([](uid_t user) {
        SmallDisk disk(user);
        disk.fillWithBytes();
        EXPECT_FALSE(disk.rig.handOver(std::nullopt));
        EXPECT_FALSE(disk.rig.folder().isFlagOf(user));
        EXPECT_TRUE(disk.rig.folder().isFlagOf(std::nullopt));
        EXPECT_FALSE(disk.rig.isOn());
        EXPECT_TRUE(user == 0 || !mayWrite(user, disk.rig.state()));
        EXPECT_EQ(disk.names(), (Names{"state", left(user)}));
        // The user's own file becomes the flag again, which needs no disk space.
        EXPECT_TRUE(disk.rig.handOver(user));
        EXPECT_TRUE(disk.rig.isOn());
        EXPECT_EQ(disk.names(), Names{"state"});
        EXPECT_FALSE(disk.rig.handOver(std::nullopt));
        EXPECT_EQ(disk.names(), (Names{"state", left(user)}));
        disk.empty();
        EXPECT_TRUE(disk.rig.handOver(std::nullopt));
        EXPECT_TRUE(disk.rig.handOver(user));
        EXPECT_TRUE(disk.rig.isOn());
        EXPECT_EQ(disk.names(), Names{"state"});
    });
}

// Returns the file names in the pending inotify events.
Names reported(const Descriptor& events) {
    Names names;
    alignas(inotify_event) std::array<char, 4096> buffer{};
    const ssize_t size = ::read(events.number(), buffer.data(), buffer.size());
    for (ssize_t at = 0; at < size;) {
        inotify_event event{};
        std::memcpy(&event, buffer.data() + at, sizeof event);
        names.insert(buffer.data() + at + sizeof event);
        at += static_cast<ssize_t>(sizeof event + event.len);
    }
    return names;
}

// After an event with the flag's name, the application writes an "off" that was refused before. Without this event the
// pad could stay muted.
TEST(HandOverOnAFullDiskTest, IsReportedUnderTheFlagsNameWhenTheUserReturns) {
    inPrivateMachine([](uid_t user) {
        SmallDisk disk(user);
        disk.fillWithBytes();
        ASSERT_FALSE(disk.rig.handOver(std::nullopt));
        const Descriptor events(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
        constexpr std::uint32_t whatTheApplicationWatches = IN_CREATE | IN_MOVED_TO | IN_ATTRIB;
        ASSERT_GE(::inotify_add_watch(events.number(), disk.rig.path().c_str(), whatTheApplicationWatches), 0);
        ASSERT_TRUE(disk.rig.handOver(user));
        EXPECT_TRUE(reported(events).contains("state"));
    });
}

TEST(HandOverOnAFullDiskTest, RevokesTheRightEvenWithoutRoomForALink) {
    inPrivateMachine([](uid_t user) {
        SmallDisk disk(user);
        disk.fillWithFiles();
        EXPECT_FALSE(disk.rig.handOver(std::nullopt));
        EXPECT_TRUE(disk.rig.folder().isFlagOf(std::nullopt));
        EXPECT_TRUE(user == 0 || !mayWrite(user, disk.rig.state()));
        EXPECT_EQ(disk.names(), Names{"state"});
        disk.empty();
        EXPECT_TRUE(disk.rig.handOver(user));
        EXPECT_TRUE(disk.rig.folder().isFlagOf(user));
        EXPECT_FALSE(disk.rig.isOn());
        EXPECT_EQ(disk.names(), Names{"state"});
    });
}

TEST(HandOverOnAFullDiskTest, FailsOnAReadOnlyFileSystem) {
    inPrivateMachine([](uid_t user) {
        SmallDisk disk(user);
        ASSERT_EQ(::mount("none", disk.rig.path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        EXPECT_FALSE(disk.rig.handOver(std::nullopt));
        EXPECT_EQ(disk.names(), Names{"state"});
        ASSERT_EQ(::mount("none", disk.rig.path().c_str(), nullptr, MS_REMOUNT, nullptr), 0);
        EXPECT_TRUE(disk.rig.handOver(std::nullopt));
        EXPECT_FALSE(disk.rig.isOn());
    });
}

}  // namespace
}  // namespace kovra::helper
