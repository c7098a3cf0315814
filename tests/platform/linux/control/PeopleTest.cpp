#include "BLE_kovra/platform/linux/control/People.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/support/posix/TempFolder.h"

namespace kovra::control {
namespace {

// A folder like /proc.
class PeopleTest : public testing::Test {
  protected:
    void addProcess(const std::string& id, const std::string& name, const std::string& user,
                    const std::string& state = "S (sleeping)") {
        std::filesystem::create_directories(folder_ / id);
        writeFile(folder_ / id + "/status", "Name:\t" + name + "\nUmask:\t0022\nState:\t" + state + "\nPid:\t" + id +
                                                "\nUid:\t" + user + "\t" + user + "\t" + user + "\t" + user + "\n");
    }
    std::string found(const std::string& name) {
        std::string text;
        for (const Process& process : processesNamed(name, folder_.path()))
            text += std::to_string(process.id) + " of " + std::to_string(process.user.id) + "; ";
        return text;
    }

    const TempFolder folder_;
};

TEST_F(PeopleTest, AreFoundByWhatTheyRun) {
    addProcess("20", "ble-kovra", "1001");
    addProcess("7", "ble-kovra", "1000");
    addProcess("8", "ble-kovra-ui", "1000");
    addProcess("9", "ble-kovra", "1000", "Z (zombie)");
    addProcess("10", "ble-kovra", "1000", "T (stopped)");
    addProcess("self", "ble-kovra", "1000");
    std::filesystem::create_directories(folder_ / "11");  // it has just ended
    EXPECT_EQ(found("ble-kovra"), "7 of 1000; 10 of 1000; 20 of 1001; ");
    EXPECT_EQ(found("ble-kovra-ui"), "8 of 1000; ");
    EXPECT_EQ(found("kovra"), "");
    EXPECT_TRUE(processesNamed("ble-kovra", folder_ / "missing").empty());
}

// A process may end between the opening and the reading of its file. A folder in place of the file cannot be read
// either.
TEST_F(PeopleTest, AreFoundAlthoughAProcessCannotBeRead) {
    addProcess("20", "ble-kovra", "1001");
    std::filesystem::create_directories(folder_ / "7/status");
    EXPECT_EQ(found("ble-kovra"), "20 of 1001; ");
}

TEST_F(PeopleTest, HaveTheNameOfTheirAccountOrItsNumber) {
    EXPECT_EQ(personOf(0).name, "root");
    constexpr uid_t nobodys = 3999999999;
    EXPECT_EQ(personOf(nobodys).name, "3999999999");
    EXPECT_EQ(personOf(nobodys).id, nobodys);
}

TEST_F(PeopleTest, RunProcessesWithAName) {
    EXPECT_EQ(nameOfProcess(::getpid()), "test_facts");
    EXPECT_EQ(nameOfProcess(-1), "");
}

// ble-kovractl prints such a name as JSON, which is UTF-8.
TEST_F(PeopleTest, RunProcessesWhoseNamesMayNotBeText) {
    ::prctl(PR_SET_NAME, "panel \xFF");
    const std::string name = nameOfProcess(::getpid());
    ::prctl(PR_SET_NAME, "test_facts");
    EXPECT_EQ(name, "panel \xEF\xBF\xBD");
}

}  // namespace
}  // namespace kovra::control
