#include "BLE_kovra/platform/linux/desktop/SmallTextFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <set>
#include <string>
#include <vector>

#include "tests/platform/linux/desktop/HangingSync.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {

std::atomic<bool> syncsHang = false;

namespace {

// A call of fsync(): the inode and the size of the file or folder at that moment.
struct Synced {
    ino_t inode = 0;
    off_t size = 0;
    std::string target;  // the contents of `targetPath` at that moment
};

std::vector<Synced> allSynced;
std::string targetPath;
int errorOfSync = 0;

}  // namespace
}  // namespace kovra

// Replaces the C library's function in this program, and records each call.
extern "C" int fsync(int descriptor) {
    while (kovra::syncsHang) ::usleep(1000);
    struct stat status{};
    if (::fstat(descriptor, &status) == 0 && !kovra::targetPath.empty())
        kovra::allSynced.push_back({status.st_ino, status.st_size, kovra::readFile(kovra::targetPath)});
    if (kovra::errorOfSync != 0) {
        errno = kovra::errorOfSync;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

namespace kovra {
namespace {

class SmallTextFileTest : public testing::Test {
  protected:
    SmallTextFileTest() {
        writeFile(targetPath, "old");
        allSynced.clear();
    }
    ~SmallTextFileTest() override {
        targetPath.clear();
        errorOfSync = 0;
    }

    TempFolder folder_;
    const std::string path_ = targetPath = folder_ / "file";
    const SmallTextFile file_{path_};
};

TEST_F(SmallTextFileTest, SyncsTheWholeTextBeforeTheRenameAndTheFolderAfterIt) {
    ASSERT_EQ(file_.replace("new text", SmallTextFile::Old::replaced), 0);
    struct stat file{}, folder{};
    ASSERT_EQ(::stat(path_.c_str(), &file), 0);
    ASSERT_EQ(::stat(folder_.path().c_str(), &folder), 0);
    ASSERT_EQ(allSynced.size(), 2U);
    EXPECT_EQ(allSynced[0].inode, file.st_ino);
    EXPECT_EQ(allSynced[0].size, 8);
    EXPECT_EQ(allSynced[0].target, "old");
    EXPECT_EQ(allSynced[1].inode, folder.st_ino);
    EXPECT_EQ(allSynced[1].target, "new text");
}

TEST_F(SmallTextFileTest, StaysAsItWasIfTheTextCannotBeSynced) {
    errorOfSync = EIO;
    EXPECT_EQ(file_.replace("new text", SmallTextFile::Old::replaced), EIO);
    EXPECT_EQ(readFile(path_), "old");
    EXPECT_EQ(folder_.names(), std::set<std::string>{"file"});
}

}  // namespace
}  // namespace kovra
