#include "BLE_kovra/platform/linux/session/NotedFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/posix/FileDescriptor.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// Files that were noted long after they had last changed.
class NotedFilesTest : public testing::Test {
  protected:
    NotedFilesTest() { writeFile(file, "one"); }

    static NotedFiles noted(const std::vector<std::string>& paths, std::chrono::seconds later = 10s) {
        NotedFiles files([later] { return NotedFiles::realTime() + later; });
        for (const std::string& path : paths) files.note(path);
        return files;
    }

    // The kernel may be unable to answer from memory while other programs rename files or need memory. Another program
    // that looks at the files puts them into memory again.
    bool areUnchanged(const NotedFiles& files) const {
        for (int attempt = 0; attempt < 1000; ++attempt) {
            if (files.areUnchanged()) return true;
            for (const std::string& path : {file, missing, link}) ::access(path.c_str(), F_OK);
        }
        return false;
    }

    const TempFolder folder;
    const std::string file = folder / "file";
    const std::string missing = folder / "missing/file";
    const std::string link = folder / "link";
};

TEST_F(NotedFilesTest, AreUnchangedAsLongAsNothingHappens) {
    const NotedFiles files = noted({missing, file});
    EXPECT_TRUE(areUnchanged(files));
    EXPECT_TRUE(areUnchanged(files));
}

TEST_F(NotedFilesTest, HaveChangedIfOneOfThemWasWrittenReplacedRemovedOrHasOtherPermissions) {
    const std::vector<std::function<void()>> changes = {
        [&] { writeFile(file, "longer"); },
        [&] {
            writeFile(folder / "other", "two");
            std::filesystem::rename(folder / "other", file);
        },
        [&] { std::filesystem::remove(file); },
        [&] { ::chmod(file.c_str(), 0); },
    };
    for (std::size_t number = 0; number < changes.size(); ++number) {
        writeFile(file, "one");
        const NotedFiles files = noted({missing, file});
        ASSERT_TRUE(areUnchanged(files)) << number;
        // The kernel's clock for the times of files ticks every 10 ms or more often.
        ::usleep(20'000);
        changes[number]();
        EXPECT_FALSE(files.areUnchanged()) << number;
        std::filesystem::remove(file);
    }
}

TEST_F(NotedFilesTest, HaveChangedOnceAMissingFileExists) {
    const NotedFiles files = noted({missing, file});
    ASSERT_TRUE(areUnchanged(files));
    std::filesystem::create_directory(folder / "missing");
    writeFile(missing, "");
    EXPECT_FALSE(files.areUnchanged());
}

TEST_F(NotedFilesTest, FollowALink) {
    std::filesystem::create_symlink("file", link);
    const NotedFiles files = noted({link});
    ASSERT_TRUE(areUnchanged(files));
    writeFile(file, "longer");
    EXPECT_FALSE(files.areUnchanged());
}

TEST_F(NotedFilesTest, MayHaveChangedIfTheyWereNotedRightAfterAChange) {
    EXPECT_FALSE(noted({file}, 0s).areUnchanged());
    EXPECT_FALSE(noted({file}, -3600s).areUnchanged());
}

TEST_F(NotedFilesTest, MayHaveChangedIfTheKernelHasToAskTheirFileSystem) {
    // procfs never answers from memory which file a descriptor refers to.
    const FileDescriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_FALSE(noted({"/proc/self/fd/" + std::to_string(descriptor.number())}).areUnchanged());
}

TEST_F(NotedFilesTest, MayHaveChangedIfNoneWasNoted) { EXPECT_FALSE(noted({}).areUnchanged()); }

}  // namespace
}  // namespace kovra
