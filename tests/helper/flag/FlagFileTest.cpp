#include "helper/flag/FlagFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string>
#include <vector>

#include "helper/flag/HandOver.h"
#include "tests/helper/AsRoot.h"
#include "tests/helper/Users.h"
#include "tests/helper/flag/FlagRig.h"

namespace kovra::helper {
namespace {

TEST(FlagFileTest, IsOnIfItConsistsOfTheTwoBytesAndElseOff) {
    FlagRig rig;
    writeFile(rig.state(), "on");
    EXPECT_TRUE(rig.isOn());
    const std::vector<std::string> others = {
        "",          "o",         "n",         "off",       "of",  "onf", "ON",   "On",   "oN", "no",
        "onn",       "on\n",      "on\r\n",    "on ",       " on", "o\n", "onon", "true", "1",  "\xEF\xBB\xBFon",
        {"on\0", 3}, {"o\0n", 3}, {"\0on", 3}, {"\0\0", 2},
    };
    for (const std::string& other : others) {
        writeFile(rig.state(), other);
        EXPECT_FALSE(rig.isOn()) << ::testing::PrintToString(other);
    }
}

TEST(FlagFileTest, IsOffIfItIsMissingOrBelongsToAnotherUser) {
    FlagRig rig;
    EXPECT_FALSE(rig.isOn());
    writeFile(rig.state(), "on");
    const auto folder = Descriptor(::open(rig.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    EXPECT_TRUE(FlagFile::open(folder.number(), flagName, ::geteuid()));
    EXPECT_FALSE(FlagFile::open(folder.number(), flagName, ::geteuid() + 1));
}

TEST(FlagFileTest, IsOffOnceItBelongsToAnotherUser) {
    runAsRoot([] {
        FlagRig rig;
        rig.handOver(alice);
        rig.write(alice, "on");
        ASSERT_TRUE(rig.isOn());
        ASSERT_EQ(::chown(rig.state().c_str(), alice, alice), 0);
        EXPECT_FALSE(rig.isOn());
    });
}

TEST(FlagFileTest, IsOneUsersOnlyIfTheWholeAccessListSaysSo) {
    struct Case {
        const char* list;
        bool isAlices;
        bool isNobodys;
    };
    for (const auto& [list, isAlices, isNobodys] : {
             Case{"u::rw-,u:61001:rw-,g::r--,m::rw-,o::r--", true, false},
             Case{"u::rw-,g::r--,o::r--", false, true},
             Case{"u::rw-,u:61002:rw-,g::r--,m::rw-,o::r--", false, false},
             Case{"u::rw-,u:61001:rw-,u:61002:rw-,g::r--,m::rw-,o::r--", false, false},
             Case{"u::rw-,u:61001:rw-,u:61002:r--,g::r--,m::rw-,o::r--", false, false},
             Case{"u::rw-,u:61001:rw-,g::rw-,m::rw-,o::r--", false, false},
             Case{"u::rw-,u:61001:rw-,g::r--,g:61001:rw-,m::rw-,o::r--", false, false},
             Case{"u::rw-,u:61001:rw-,g::r--,m::rw-,o::rw-", false, false},
             Case{"u::rw-,u:61001:rw-,g::r--,m::r--,o::r--", false, false},
             Case{"u::rw-,u:61001:r--,g::r--,m::r--,o::r--", false, false},
             Case{"u::rw-,u:61001:rwx,g::r--,m::rwx,o::r--", false, false},
             Case{"u::rw-,g::rw-,o::r--", false, false},
             Case{"u::rw-,g::r--,o::rw-", false, false},
         }) {
        SCOPED_TRACE(list);
        FlagRig rig;
        writeFile(rig.state(), "on");
        setAccessList(rig.state(), list);
        EXPECT_EQ(rig.folder().isFlagOf(alice), isAlices);
        EXPECT_EQ(rig.folder().isFlagOf(std::nullopt), isNobodys);
        EXPECT_FALSE(rig.folder().isFlagOf(0));
    }
}

TEST(FlagFileTest, IsCreatedForItsOwnerAloneAndReplacesNoFile) {
    const FlagRig rig;
    const Descriptor folder(::open(rig.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto before = ::umask(0);
    EXPECT_TRUE(FlagFile::create(folder.number(), "new", FlagFile::Content::on));
    ::umask(before);
    EXPECT_EQ(rig.content("new"), "on");
    EXPECT_EQ(accessList(rig.path("new")), "u::rw-,g::---,o::---");
    EXPECT_FALSE(FlagFile::create(folder.number(), "new", FlagFile::Content::off));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(rig.content("new"), "on");
}

TEST(FlagFileTest, IsNotLeftBehindIncomplete) {
    const FlagRig rig;
    const Descriptor folder(::open(rig.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit oneByte{1, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &oneByte), 0);
    const bool isCreated = FlagFile::create(folder.number(), "new", FlagFile::Content::off).has_value();
    const int error = errno;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_FALSE(isCreated);
    EXPECT_EQ(error, ENOSPC);
    EXPECT_TRUE(rig.names().empty());
}

}  // namespace
}  // namespace kovra::helper
