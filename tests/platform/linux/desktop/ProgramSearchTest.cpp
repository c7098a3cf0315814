#include "BLE_kovra/platform/linux/desktop/ProgramSearch.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/Environment.h"
#include "tests/support/posix/Scripts.h"
#include "tests/support/posix/TempFolder.h"

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

TEST(ProgramSearchTest, KnowsWhetherItsOwnFileWasReplaced) {
    const char* variable = "KOVRA_FILE_TO_REPLACE";
    if (const char* file = std::getenv(variable)) {  // this is the copy below
        EXPECT_FALSE(isOwnProgramReplaced());
        const std::string newer = std::string(file) + ".new";
        fs::copy_file("/bin/true", newer);
        fs::rename(newer, file);
        EXPECT_TRUE(isOwnProgramReplaced());
        EXPECT_EQ(ownProgram(), file);
        return;
    }
    EXPECT_FALSE(isOwnProgramReplaced());
    const TempFolder folder;
    const std::string copy = folder / "copy";
    fs::copy_file("/proc/self/exe", copy);
    const std::string command = std::string("env -u GTEST_OUTPUT ") + variable + "='" + copy + "' '" + copy +
                                "' --gtest_filter=ProgramSearchTest.KnowsWhetherItsOwnFileWasReplaced";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

}  // namespace
}  // namespace kovra
