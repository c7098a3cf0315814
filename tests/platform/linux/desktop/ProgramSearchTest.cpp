#include "BLE_kovra/platform/linux/desktop/ProgramSearch.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/Environment.h"
#include "tests/support/posix/Scripts.h"

namespace kovra {
namespace {

namespace fs = std::filesystem;

TEST(ProgramSearchTest, FindsTheFirstExecutableInThePath) {
    const Scripts scripts;
    for (const char* folder : {"folder", "file", "program"}) fs::create_directory(scripts / folder);
    fs::create_directory(scripts / "folder/tool");
    writeFile(scripts / "file/tool", "");
    const std::string program = scripts.make("", "program/tool");
    Environment environment;
    environment.set("PATH", (scripts / "missing") + ":" + (scripts / "folder") + ":" + (scripts / "file"));
    EXPECT_EQ(findProgram("tool"), std::nullopt);
    environment.set("PATH", (scripts / "folder") + ":" + (scripts / "file") + ":" + (scripts / "program"));
    EXPECT_EQ(findProgram("tool"), program);
    EXPECT_EQ(findProgram(program), program);
    EXPECT_EQ(findProgram(scripts / "file/tool"), std::nullopt);
    environment.unset({"PATH"});
    EXPECT_EQ(findProgram("tool"), std::nullopt);
}

TEST(ProgramSearchTest, FindsItsOwnProgram) { EXPECT_EQ(ownProgram(), fs::canonical("/proc/self/exe")); }

}  // namespace
}  // namespace kovra
