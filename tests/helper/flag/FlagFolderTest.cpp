#include "helper/flag/FlagFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <ios>
#include <string>

#include "tests/helper/AsRoot.h"
#include "tests/helper/RunUntil.h"
#include "tests/helper/Users.h"
#include "tests/helper/flag/FlagRig.h"

namespace kovra::helper {
namespace {

namespace fs = std::filesystem;

bool opens(FlagRig& rig) { return FlagFolder::open(rig.loop(), folderPath, rig.trust()) != nullptr; }

TEST(FlagFolderTest, OpensIfOnlyTheOwnerCanWriteEachFolderOfThePath) {
    FlagRig rig;
    EXPECT_TRUE(opens(rig));
}

TEST(FlagFolderTest, IsRefusedIfItIsMissingOrNoFolder) {
    FlagRig rig;
    fs::remove(rig.path());
    EXPECT_FALSE(opens(rig));
    writeFile(rig.path(), "on");
    EXPECT_FALSE(opens(rig));
}

TEST(FlagFolderTest, IsRefusedIfAnyFolderOfThePathIsALink) {
    for (const std::string name : {"/Library", "/Library/Application Support", folderPath}) {
        FlagRig rig;
        fs::rename(rig.root() + name, rig.root() + "/elsewhere");
        fs::create_directory_symlink(rig.root() + "/elsewhere", rig.root() + name);
        EXPECT_FALSE(opens(rig)) << name;
    }
}

TEST(FlagFolderTest, IsRefusedIfOthersMayWriteAnyFolderOfThePath) {
    for (const std::string name : {"", "/Library", "/Library/Application Support", folderPath}) {
        for (const ::mode_t mode : {0775, 0757, 01777}) {
            FlagRig rig;
            ::chmod((rig.root() + name).c_str(), mode);
            EXPECT_FALSE(opens(rig)) << name << " " << std::oct << mode;
        }
    }
}

TEST(FlagFolderTest, IsRefusedIfAnAccessListLetsAnotherUserWriteIt) {
    FlagRig rig;
    setAccessList(rig.path(), "u::rwx,u:61001:rwx,g::r-x,m::rwx,o::r-x");
    EXPECT_FALSE(opens(rig));
}

TEST(FlagFolderTest, OpensInFoldersOfRootOnlyIfItBelongsToTheOwner) {
    runAsRoot([] {
        FlagRig rig;
        const auto opensFor = [&](uid_t owner) {
            return FlagFolder::open(rig.loop(), folderPath, {rig.root(), owner}) != nullptr;
        };
        EXPECT_FALSE(opensFor(alice));
        ASSERT_EQ(::chown(rig.path().c_str(), alice, alice), 0);
        EXPECT_TRUE(opensFor(alice));
        EXPECT_FALSE(opensFor(bob));
        EXPECT_FALSE(opensFor(0));
        ASSERT_EQ(::chown((rig.root() + "/Library").c_str(), bob, bob), 0);
        EXPECT_FALSE(opensFor(alice));
    });
}

TEST(FlagFolderTest, IsRefusedIfThePathBelongsToAnotherUser) {
    FlagRig rig;
    EXPECT_EQ(FlagFolder::open(rig.loop(), folderPath, {rig.root(), ::geteuid() + 1}), nullptr);
}

TEST(FlagFolderTest, IsRefusedIfAnyFolderOfThePathBelongsToAnotherUser) {
    runAsRoot([] {
        for (const std::string name : {"", "/Library", "/Library/Application Support", folderPath}) {
            FlagRig given;
            ASSERT_EQ(::chown((given.root() + name).c_str(), alice, alice), 0);
            EXPECT_FALSE(opens(given)) << name;
        }
    });
}

class Notifications {
  public:
    explicit Notifications(FlagRig& rig) : rig_(rig) {
        rig.folder().onChange = [this] { ++changes_; };
        rig.folder().onLost = [this] { ++losses_; };
        settle();
    }
    void settle() {
        handleEvents(rig_.loop());
        changes_ = 0;
        losses_ = 0;
    }
    bool gotChange() {
        const bool received = rig_.runUntil([&] { return changes_ > 0; });
        settle();
        return received;
    }
    bool gotLoss() {
        const bool received = rig_.runUntil([&] { return losses_ > 0; });
        handleEvents(rig_.loop());
        const bool isOnce = losses_ == 1;
        settle();
        return received && isOnce;
    }
    bool gotNothing() {
        handleEvents(rig_.loop());
        return changes_ == 0 && losses_ == 0;
    }

  private:
    FlagRig& rig_;
    int changes_ = 0;
    int losses_ = 0;
};

TEST(FlagFolderTest, NotifiesOfEachWriteOfTheApplication) {
    FlagRig rig;
    rig.handOver(alice);
    Notifications notifications(rig);
    for (const std::string text : {"on", "off", "off", "on"}) {
        rig.write(alice, text);
        EXPECT_TRUE(notifications.gotChange());
        EXPECT_EQ(rig.isOn(), text == "on");
    }
}

TEST(FlagFolderTest, NotifiesOfAFlagThatIsRemovedMovedOrReplaced) {
    FlagRig rig;
    rig.handOver(alice);
    Notifications notifications(rig);
    fs::remove(rig.state());
    EXPECT_TRUE(notifications.gotChange());
    writeFile(rig.state(), "on");
    EXPECT_TRUE(notifications.gotChange());
    writeFile(rig.path("other"), "off");
    fs::rename(rig.path("other"), rig.state());
    EXPECT_TRUE(notifications.gotChange());
    writeFile(rig.state(), "on");  // changes the flag, but not its folder
    EXPECT_TRUE(notifications.gotChange());
    fs::rename(rig.state(), rig.path("other"));
    EXPECT_TRUE(notifications.gotChange());
}

TEST(FlagFolderTest, WatchesTheNewFlagAfterEachHandOver) {
    FlagRig rig;
    Notifications notifications(rig);
    for (int round = 0; round < 20; ++round) {
        const uid_t user = round % 2 == 0 ? alice : bob;
        rig.handOver(user);
        EXPECT_TRUE(notifications.gotChange());
        rig.write(user, "on");
        EXPECT_TRUE(notifications.gotChange());
        EXPECT_TRUE(rig.isOn());
        rig.write(user, "off");
    }
}

TEST(FlagFolderTest, NotifiesOfASecondNameAndOfWritesThroughIt) {
    FlagRig rig;
    rig.makeFolder("theirs");
    rig.handOver(alice);
    rig.write(alice, "on");
    Notifications notifications(rig);
    const std::string second = rig.root() + "/theirs/second";
    fs::create_hard_link(rig.state(), second);
    EXPECT_TRUE(notifications.gotChange());
    for (const std::string text : {"off", "on"}) {
        writeFile(second, text);
        EXPECT_TRUE(notifications.gotChange());
        EXPECT_EQ(rig.isOn(), text == "on");
    }
    fs::remove(second);
    EXPECT_TRUE(notifications.gotChange());
    for (const bool isOn : {false, true}) {
        if (isOn)
            fs::remove(rig.path("second"));
        else
            fs::create_hard_link(rig.state(), rig.path("second"));
        EXPECT_TRUE(notifications.gotChange());
        EXPECT_EQ(rig.isOn(), isOn);
    }
}

TEST(FlagFolderTest, DoesNotNotifyOfChangesThatDoNotCount) {
    FlagRig rig;
    rig.handOver(alice);
    const Descriptor kept(::open(rig.state().c_str(), O_RDWR | O_CLOEXEC));
    rig.handOver(bob);
    Notifications notifications(rig);
    FlagRig::writeTo(kept, "on");
    writeFile(rig.path("other"), "on");
    writeFile(rig.root() + "/Library/neighbour", "on");
    fs::remove(rig.root() + "/Library/neighbour");
    readFile(rig.state());
    EXPECT_TRUE(notifications.gotNothing());
    rig.write(bob, "on");
    EXPECT_TRUE(notifications.gotChange());
}

// Causes so many events that the kernel's inotify queue is full. The kernel then drops further events.
void overflowQueue(const FlagRig& rig) {
    int room = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> room;
    ASSERT_GT(room, 0);
    for (int events = 0; events <= room; events += 2) {
        writeFile(rig.path("other"), "");
        fs::remove(rig.path("other"));
    }
}

TEST(FlagFolderTest, NotifiesOfAFlagThatAppearedDuringAnEventOverflow) {
    FlagRig rig;
    Notifications notifications(rig);
    overflowQueue(rig);
    writeFile(rig.state(), "off");
    EXPECT_TRUE(notifications.gotChange());
    writeFile(rig.state(), "on");  // changes the flag, but not its folder
    EXPECT_TRUE(notifications.gotChange());
}

TEST(FlagFolderTest, IsLostOnceWhenItWasMovedDuringAnEventOverflow) {
    FlagRig rig;
    rig.handOver(alice);
    Notifications notifications(rig);
    overflowQueue(rig);
    fs::rename(rig.path(), rig.root() + "/gone");
    EXPECT_TRUE(notifications.gotLoss());
    // The folder is still open, but the helper does not watch it any more.
    writeFile(rig.root() + "/gone/state", "on");
    ::chmod((rig.root() + "/gone").c_str(), 0700);
    EXPECT_TRUE(notifications.gotNothing());
}

TEST(FlagFolderTest, IsLostWhenAFolderOfThePathIsMovedRemovedOrOpenedToOthers) {
    const auto lost = [](const std::function<void(const FlagRig&)>& happen) {
        FlagRig rig;
        rig.makeFolder("elsewhere");
        rig.handOver(alice);
        Notifications notifications(rig);
        happen(rig);
        return notifications.gotLoss();
    };
    for (const std::string name : {"/Library", "/Library/Application Support", folderPath}) {
        EXPECT_TRUE(lost([&](const FlagRig& rig) { fs::rename(rig.root() + name, rig.root() + "/elsewhere/gone"); }))
            << name;
        EXPECT_TRUE(lost([&](const FlagRig& rig) { fs::remove_all(rig.root() + name); })) << name;
        EXPECT_TRUE(lost([&](const FlagRig& rig) {
            fs::rename(rig.root() + name, rig.root() + "/elsewhere/gone");
            rig.makeFlagFolder();
        })) << name;
        EXPECT_TRUE(lost([&](const FlagRig& rig) { ::chmod((rig.root() + name).c_str(), 0775); })) << name;
        EXPECT_TRUE(lost([&](const FlagRig& rig) {
            fs::rename(rig.root() + name, rig.root() + "/elsewhere/gone");
            fs::create_directory_symlink(rig.root() + "/elsewhere/gone", rig.root() + name);
        })) << name;
    }
}

int watches() {
    int found = 0;
    for (const auto& descriptor : fs::directory_iterator("/proc/self/fdinfo")) {
        std::ifstream file(descriptor.path());
        for (std::string line; std::getline(file, line);) found += line.starts_with("inotify ") ? 1 : 0;
    }
    return found;
}

TEST(FlagFolderTest, LeaksNoWatchesOrDescriptorsInManyHandOvers) {
    FlagRig rig;
    for (const uid_t user : {alice, bob, alice}) rig.handOver(user);
    const auto open = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()); };
    const int watchesBefore = watches();
    const auto openBefore = open();
    // The watches are on three folders above the flag's folder, that folder, and the flag.
    EXPECT_EQ(watchesBefore, 5);
    for (int round = 0; round < 200; ++round) rig.handOver(round % 2 == 0 ? bob : alice);
    EXPECT_EQ(watches(), watchesBefore);
    EXPECT_EQ(open(), openBefore);
}

}  // namespace
}  // namespace kovra::helper
