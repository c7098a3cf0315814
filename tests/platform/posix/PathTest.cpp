#include "BLE_kovra/platform/posix/Path.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <optional>
#include <string>

#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

TEST(PathTest, TheFolderIsWhatPrecedesTheLastSlash) {
    EXPECT_EQ(folderOf("/a/b"), "/a");
    EXPECT_EQ(folderOf("/a"), "/");
    EXPECT_EQ(folderOf("/"), "/");
    EXPECT_EQ(folderOf("a/b"), "a");
    EXPECT_EQ(folderOf("a"), "");
    EXPECT_EQ(folderOf(""), "");
}

TEST(PathTest, OnlyALinkHasATarget) {
    const TempFolder folder;
    writeFile(folder / "file", "text");
    const std::string target(1000, 'x');
    ASSERT_EQ(::symlink(target.c_str(), (folder / "link").c_str()), 0);
    EXPECT_EQ(linkTarget(folder / "link"), target);
    EXPECT_EQ(linkTarget(folder / "file"), std::nullopt);
    EXPECT_EQ(linkTarget(folder / "missing"), std::nullopt);
}

}  // namespace
}  // namespace kovra
