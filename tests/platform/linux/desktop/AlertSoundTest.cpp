#include "BLE_kovra/platform/linux/desktop/AlertSound.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <cerrno>
#include <fstream>
#include <string>

#include "tests/support/posix/OwnProcess.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

TEST(AlertSoundTest, LeavesNoChildAndNoDescriptorAndNoLibrary) {
    const std::size_t before = openDescriptors();
    playAlertSound();
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(openDescriptors(), before);
    std::ifstream maps("/proc/self/maps");
    const std::string mapped((std::istreambuf_iterator<char>(maps)), std::istreambuf_iterator<char>());
    EXPECT_FALSE(mapped.empty());
    EXPECT_EQ(mapped.find("libcanberra"), std::string::npos);
}

TEST(AlertSoundTest, IsPlayedByAProcessWithANameOfItsOwn) {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    playAlertSound();
    siginfo_t player{};
    EXPECT_EQ(::waitid(P_ALL, 0, &player, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(readFile("/proc/" + std::to_string(player.si_pid) + "/comm"), "ble-kovra-sound\n");
    EXPECT_EQ(::waitpid(player.si_pid, nullptr, 0), player.si_pid);
    ::prctl(PR_SET_CHILD_SUBREAPER, 0);
}

}  // namespace
}  // namespace kovra
