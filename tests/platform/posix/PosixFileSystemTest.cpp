#include "BLE_kovra/platform/posix/PosixFileSystem.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>

#include "tests/support/posix/FileSizeLimit.h"
#include "tests/support/posix/OrdinaryUser.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

namespace fs = std::filesystem;

class PosixFileSystemTest : public testing::Test {
  protected:
    std::string write(std::string_view text) { return PosixFileSystem().writeWholeFile(flag_, text).reason(); }
    std::string content() const { return readFile(flag_); }
    static std::string system(int error) { return std::strerror(error); }

    TempFolder folder_;
    const std::string flag_ = folder_ / "state";
};

TEST_F(PosixFileSystemTest, ReplacesAnyContent) {
    for (const std::string& old :
         {std::string(), std::string("on"), std::string("off"), std::string("of"), std::string("onf"),
          std::string("on\n"), std::string("o"), std::string(3, '\0'), std::string(10240, 'x')}) {
        for (const std::string text : {"on", "off"}) {
            writeFile(flag_, old);
            EXPECT_EQ(write(text), "");
            EXPECT_EQ(content(), text) << "after " << old.size() << " bytes";
        }
    }
}

TEST_F(PosixFileSystemTest, KeepsTheFileAndItsPermissions) {
    writeFile(flag_, "off");
    ::chmod(flag_.c_str(), 0640);
    struct stat before{}, after{};
    ASSERT_EQ(::stat(flag_.c_str(), &before), 0);
    EXPECT_EQ(write("on"), "");
    ASSERT_EQ(::stat(flag_.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(before.st_mode, after.st_mode);
    EXPECT_EQ(folder_.names(), std::set<std::string>{"state"});
}

TEST_F(PosixFileSystemTest, CreatesAFileThatTheOwnerMayWriteAndEveryoneMayRead) {
    const mode_t mask = ::umask(022);
    EXPECT_EQ(write("on"), "");
    ::umask(mask);
    struct stat created{};
    ASSERT_EQ(::stat(flag_.c_str(), &created), 0);
    EXPECT_EQ(created.st_mode & 07777, 0644U);
}

TEST_F(PosixFileSystemTest, DoesNotCreateAMissingFolder) {
    const std::string flag = folder_ / "missing/state";
    EXPECT_EQ(PosixFileSystem().writeWholeFile(flag, "on").reason(), system(ENOENT));
    EXPECT_TRUE(folder_.names().empty());
}

TEST_F(PosixFileSystemTest, FailsInAReadOnlyFolder) {
    OrdinaryUser::give(folder_.path());
    const OrdinaryUser user;
    const Rights readOnly(folder_.path(), 0500);
    EXPECT_EQ(write("on"), system(EACCES));
    EXPECT_EQ(content(), "missing");
}

TEST_F(PosixFileSystemTest, FailsOnAReadOnlyFile) {
    writeFile(flag_, "off");
    ::chmod(flag_.c_str(), 0444);
    OrdinaryUser::give(folder_.path());
    OrdinaryUser::give(flag_);
    const OrdinaryUser user;
    EXPECT_EQ(write("on"), system(EACCES));
    EXPECT_EQ(content(), "off");
}

TEST_F(PosixFileSystemTest, RefusesAFolder) {
    fs::create_directory(flag_);
    EXPECT_EQ(write("on"), system(EISDIR));
}

TEST_F(PosixFileSystemTest, RefusesAPipeWithoutAReader) {
    ASSERT_EQ(::mkfifo(flag_.c_str(), 0600), 0);
    EXPECT_EQ(write("on"), system(ENXIO));
}

TEST_F(PosixFileSystemTest, RefusesAPipeWithAReader) {
    ASSERT_EQ(::mkfifo(flag_.c_str(), 0600), 0);
    const int reader = ::open(flag_.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_EQ(write("on"), system(EINVAL));
    char byte;
    EXPECT_EQ(::read(reader, &byte, 1), 0) << "something came through";
    ::close(reader);
}

TEST_F(PosixFileSystemTest, RefusesADevice) {
    EXPECT_EQ(PosixFileSystem().writeWholeFile("/dev/null", "on").reason(), system(EINVAL));
}

TEST_F(PosixFileSystemTest, RefusesALinkAndKeepsItsTarget) {
    const std::string target = folder_ / "target";
    writeFile(target, "precious");
    fs::create_symlink(target, flag_);
    EXPECT_EQ(write("on"), system(ELOOP));
    EXPECT_EQ(readFile(target), "precious");
    EXPECT_TRUE(fs::is_symlink(flag_));
}

TEST_F(PosixFileSystemTest, RefusesADanglingLinkAndCreatesNothing) {
    fs::create_symlink(folder_ / "target", flag_);
    EXPECT_EQ(write("on"), system(ELOOP));
    EXPECT_EQ(folder_.names(), std::set<std::string>{"state"});
}

// A limit on the size of files simulates a full disk. Even a failed write of "off" must not leave "on" in the file.
TEST_F(PosixFileSystemTest, KeepsNoWrongOnWithoutSpace) {
    for (const rlim_t room : {0U, 1U, 2U}) {
        writeFile(flag_, "on");
        std::string reason;
        {
            const FileSizeLimit limit(room);
            reason = write("off");
        }
        EXPECT_EQ(reason, system(EFBIG)) << room;
        EXPECT_NE(content(), "on") << room;
        EXPECT_EQ(write("off"), "");
        EXPECT_EQ(content(), "off") << room;
    }
}

TEST_F(PosixFileSystemTest, KeepsNoWrongOffWithoutSpace) {
    for (const rlim_t room : {0U, 1U}) {
        writeFile(flag_, "off");
        std::string reason;
        {
            const FileSizeLimit limit(room);
            reason = write("on");
        }
        EXPECT_EQ(reason, system(EFBIG)) << room;
        EXPECT_NE(content(), "off") << room;
        EXPECT_NE(content(), "on") << room;
    }
}

TEST_F(PosixFileSystemTest, LeaksNoDescriptor) {
    const auto open = [] { return std::distance(fs::directory_iterator("/dev/fd"), fs::directory_iterator()); };
    const auto before = open();
    for (int i = 0; i < 3; ++i) EXPECT_EQ(write("on"), "");
    fs::remove(flag_);
    fs::create_directory(flag_);
    EXPECT_NE(write("on"), "");
    EXPECT_EQ(open(), before);
}

}  // namespace
}  // namespace kovra
