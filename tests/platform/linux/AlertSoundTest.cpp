#include "BLE_kovra/platform/linux/AlertSound.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <fstream>
#include <string>

#include "tests/platform/linux/OwnResources.h"

namespace kovra {
namespace {

TEST(AlertSound, LeavesNoChildAndNoDescriptorAndNoLibrary) {
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

}  // namespace
}  // namespace kovra
