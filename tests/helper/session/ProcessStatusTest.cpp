#include "helper/session/ProcessStatus.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <string>

namespace kovra::helper {
namespace {

TEST(ProcessStatusTest, IsParsedFromTheKernelsText) {
    const auto status = parseProcessStatus(
        "Name:\tble-kovra\nUmask:\t0022\nState:\tS (sleeping)\nTgid:\t77\nPid:\t77\nPPid:\t12\nTracerPid:\t0\n"
        "Uid:\t1000\t1001\t1002\t1003\nGid:\t5\t6\t7\t8\n");
    ASSERT_TRUE(status);
    EXPECT_EQ(status->name, "ble-kovra");
    EXPECT_EQ(status->parent, 12);
    EXPECT_EQ(status->realUser, 1000U);
    EXPECT_EQ(status->effectiveUser, 1001U);
    EXPECT_EQ(status->pidNamespaces, 1);
}

TEST(ProcessStatusTest, CountsTheNamespacesOfTheProcess) {
    const std::string text = "Name:\tble-kovra\nPPid:\t12\nUid:\t1\t1\t1\t1\nNSpid:\t77";
    EXPECT_EQ(parseProcessStatus(text + "\n")->pidNamespaces, 1);
    EXPECT_EQ(parseProcessStatus(text + "\t5\t1\n")->pidNamespaces, 3);
}

TEST(ProcessStatusTest, IsEmptyForADamagedText) {
    for (const std::string text :
         {"", "\n\n", "Name:\tble-kovra\n", "Name:\tx\nPPid:\t1\nUid:\n", "Uid:\t1\t1\nPPid:\t1\n",
          "Name:\tx\nPPid:\tone\nUid:\t1\t1\n", "Name:\tx\nPPid:\t1\nUid:\t1\n",
          "Name:\tx\nPPid:\t1\nUid:\t99999999999\t1\n", "Name"}) {
        EXPECT_FALSE(parseProcessStatus(text)) << text;
    }
}

TEST(ProcessStatusTest, IsNotConfusedByANameThatLooksLikeFurtherLines) {
    ::prctl(PR_SET_NAME, "x\nUid:\t1\t1");
    const auto status = processStatus(::getpid());
    ::prctl(PR_SET_NAME, "test_helper");
    ASSERT_TRUE(status);
    EXPECT_EQ(status->name, "x\\nUid:\t1\t1");
    EXPECT_EQ(status->realUser, ::getuid());
}

}  // namespace
}  // namespace kovra::helper
