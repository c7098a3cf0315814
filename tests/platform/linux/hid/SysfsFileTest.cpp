#include "BLE_kovra/platform/linux/hid/SysfsFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <variant>

#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using Result = std::variant<std::string, int>;

TEST(SysfsFileTest, ReturnsTheWholeTextOrTheErrorOfTheCallThatFailed) {
    const TempFolder folder;
    const std::string text(10'000, 'x');
    writeFile(folder / "file", text);
    EXPECT_EQ(readSysfsFile(folder / "file"), Result(text));
    EXPECT_EQ(readSysfsFile(folder / "missing"), Result(ENOENT));
    EXPECT_EQ(readSysfsFile(folder.path()), Result(EISDIR)) << "a folder can be opened, but not read";
}

}  // namespace
}  // namespace kovra
