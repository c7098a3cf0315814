#include "helper/flag/FlagFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/helper/Users.h"
#include "tests/helper/flag/FlagRig.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

bool opens(FlagRig& rig) { return FlagFolder::open(rig.loop(), folderPath, rig.trust()) != nullptr; }

TEST(FlagFolderTest, IsOpenedWhereEveryFolderOnTheWayIsTheOwnersAlone) {
    FlagRig rig;
    EXPECT_TRUE(opens(rig));
}

TEST(FlagFolderTest, IsRefusedWhereItIsMissingOrNoFolder) {
    FlagRig rig;
    fs::remove(rig.path());
    EXPECT_FALSE(opens(rig));
    writeFile(rig.path(), "on");
    EXPECT_FALSE(opens(rig));
}

TEST(FlagFolderTest, IsRefusedWhereItOrAnyFolderOnTheWayIsALink) {
    for (const std::string name : {"/Library", "/Library/Application Support", folderPath}) {
        FlagRig rig;
        fs::rename(rig.root() + name, rig.root() + "/elsewhere");
        fs::create_directory_symlink(rig.root() + "/elsewhere", rig.root() + name);
        EXPECT_FALSE(opens(rig)) << name;
    }
}

TEST(FlagFolderTest, IsRefusedWhereOthersMayWriteToItOrToAnyFolderOnTheWay) {
    for (const std::string name : {"", "/Library", "/Library/Application Support", folderPath}) {
        for (const ::mode_t mode : {0775, 0757, 01777}) {
            FlagRig rig;
            ::chmod((rig.root() + name).c_str(), mode);
            EXPECT_FALSE(opens(rig)) << name << " " << std::oct << mode;
        }
    }
}

TEST(FlagFolderTest, IsRefusedWhereAnAccessListLetsSomebodyWriteToIt) {
    FlagRig rig;
    const acl_t list = acl_from_text("u::rwx,u:61001:rwx,g::r-x,m::rwx,o::r-x");
    ASSERT_EQ(acl_set_file(rig.path().c_str(), ACL_TYPE_ACCESS, list), 0);
    acl_free(list);
    EXPECT_FALSE(opens(rig));
}

TEST(FlagFolderTest, IsRefusedWhereItIsSomebodyElses) {
    FlagRig rig;
    EXPECT_EQ(FlagFolder::open(rig.loop(), folderPath, {rig.root(), ::geteuid() + 1}), nullptr);
    if (::geteuid() != 0) return;  // who else cannot give anything away
    for (const std::string name : {"", "/Library", "/Library/Application Support", folderPath}) {
        FlagRig given;
        ASSERT_EQ(::chown((given.root() + name).c_str(), alice, alice), 0);
        EXPECT_FALSE(opens(given)) << name;
    }
}

// Counts what the folder says.
class Listening {
  public:
    explicit Listening(FlagRig& rig) : rig_(rig) {
        rig.folder().onChange = [this] { ++changes_; };
        rig.folder().onLost = [this] { ++losses_; };
        settle();
    }
    // What has happened so far is over.
    void settle() {
        rig_.runFor(20ms);
        changes_ = 0;
        losses_ = 0;
    }
    bool change() {
        const bool came = rig_.runUntil([&] { return changes_ > 0; });
        settle();
        return came;
    }
    bool loss() {
        const bool came = rig_.runUntil([&] { return losses_ > 0; });
        rig_.runFor(20ms);
        return came && losses_ == 1;
    }
    bool silence() {
        rig_.runFor(50ms);
        return changes_ == 0 && losses_ == 0;
    }

  private:
    FlagRig& rig_;
    int changes_ = 0;
    int losses_ = 0;
};

TEST(FlagFolderTest, TellsOfEachWriteOfTheApplication) {
    FlagRig rig;
    rig.handOver(alice);
    Listening listening(rig);
    for (const std::string text : {"on", "off", "off", "on"}) {
        rig.write(alice, text);
        EXPECT_TRUE(listening.change());
        EXPECT_EQ(rig.isOn(), text == "on");
    }
}

TEST(FlagFolderTest, TellsOfAFlagThatIsRemovedMovedOrReplaced) {
    FlagRig rig;
    rig.handOver(alice);
    Listening listening(rig);
    fs::remove(rig.state());
    EXPECT_TRUE(listening.change());
    writeFile(rig.state(), "on");
    EXPECT_TRUE(listening.change());
    writeFile(rig.path("other"), "off");
    fs::rename(rig.path("other"), rig.state());
    EXPECT_TRUE(listening.change());
    writeFile(rig.state(), "on");  // in place, and no folder changes
    EXPECT_TRUE(listening.change());
    fs::rename(rig.state(), rig.path("other"));
    EXPECT_TRUE(listening.change());
}

TEST(FlagFolderTest, FollowsTheFlagThatIsInPlaceAfterEachHandOver) {
    FlagRig rig;
    Listening listening(rig);
    for (int round = 0; round < 20; ++round) {
        const uid_t user = round % 2 == 0 ? alice : bob;
        rig.handOver(user);
        EXPECT_TRUE(listening.change());
        rig.write(user, "on");
        EXPECT_TRUE(listening.change());
        EXPECT_TRUE(rig.isOn());
        rig.write(user, "off");
    }
}

TEST(FlagFolderTest, TellsOfASecondNameAndOfWritesThroughIt) {
    FlagRig rig;
    rig.makeFolder("theirs");
    rig.handOver(alice);
    rig.write(alice, "on");
    Listening listening(rig);
    const std::string second = rig.root() + "/theirs/second";
    fs::create_hard_link(rig.state(), second);
    EXPECT_TRUE(listening.change());
    EXPECT_FALSE(rig.isOn());
    writeFile(second, "off");
    EXPECT_TRUE(listening.change());
    writeFile(second, "on");
    EXPECT_TRUE(listening.change());
    EXPECT_FALSE(rig.isOn());
    fs::remove(second);
    EXPECT_TRUE(listening.change());
    EXPECT_TRUE(rig.isOn());
}

TEST(FlagFolderTest, IsNotWokenByWhatDoesNotCount) {
    FlagRig rig;
    rig.handOver(alice);
    const Descriptor kept(::open(rig.state().c_str(), O_RDWR | O_CLOEXEC));
    rig.handOver(bob);
    Listening listening(rig);
    FlagRig::writeTo(kept, "on");
    writeFile(rig.path("other"), "on");
    writeFile(rig.root() + "/Library/neighbour", "on");
    fs::remove(rig.root() + "/Library/neighbour");
    readFile(rig.state());
    EXPECT_TRUE(listening.silence());
}

// What came while the kernel's queue was full, it does not tell.
TEST(FlagFolderTest, FollowsAFlagThatCameWhileTooMuchHappened) {
    FlagRig rig;
    Listening listening(rig);
    int room = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> room;
    ASSERT_GT(room, 0);
    for (int events = 0; events <= room; events += 2) {
        writeFile(rig.path("other"), "");
        fs::remove(rig.path("other"));
    }
    writeFile(rig.state(), "off");
    EXPECT_TRUE(listening.change());
    writeFile(rig.state(), "on");  // in place, and no folder changes
    EXPECT_TRUE(listening.change());
}

TEST(FlagFolderTest, IsLostWhenItOrAFolderOnTheWayIsMovedRemovedOrOpenedToOthers) {
    const auto lost = [](const std::function<void(const FlagRig&)>& happen) {
        FlagRig rig;
        rig.makeFolder("elsewhere");
        rig.handOver(alice);
        Listening listening(rig);
        happen(rig);
        return listening.loss();
    };
    for (const std::string name : {"/Library", "/Library/Application Support", folderPath}) {
        EXPECT_TRUE(lost([&](const FlagRig& rig) { fs::rename(rig.root() + name, rig.root() + "/elsewhere/gone"); }))
            << name;
        EXPECT_TRUE(lost([&](const FlagRig& rig) { fs::remove_all(rig.root() + name); })) << name;
        EXPECT_TRUE(lost([&](const FlagRig& rig) { ::chmod((rig.root() + name).c_str(), 0775); })) << name;
        EXPECT_TRUE(lost([&](const FlagRig& rig) {
            fs::rename(rig.root() + name, rig.root() + "/elsewhere/gone");
            fs::create_directory_symlink(rig.root() + "/elsewhere/gone", rig.root() + name);
        })) << name;
    }
}

// What is watched, of the one descriptor for events that this process has.
int marks() {
    int found = 0;
    for (const auto& descriptor : fs::directory_iterator("/proc/self/fdinfo")) {
        std::ifstream file(descriptor.path());
        for (std::string line; std::getline(file, line);) found += line.starts_with("inotify ") ? 1 : 0;
    }
    return found;
}

TEST(FlagFolderTest, DoesNotGatherMarksNorDescriptorsOverManyHandOvers) {
    FlagRig rig;
    rig.handOver(alice);
    const auto open = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()); };
    const int marksBefore = marks();
    const auto openBefore = open();
    EXPECT_EQ(marksBefore, 5);  // three folders on the way, the folder, the flag
    for (int round = 0; round < 200; ++round) rig.handOver(round % 2 == 0 ? bob : alice);
    EXPECT_EQ(marks(), marksBefore);
    EXPECT_EQ(open(), openBefore);
}

}  // namespace
}  // namespace kovra::helper
