#include "helper/Log.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace kovra::helper {
namespace {

TEST(LogTest, WritesALineWithItsSeverityUnlessItRepeatsThePreviousLine) {
    testing::internal::CaptureStderr();
    log(Severity::warning, "one");
    log(Severity::warning, "one");
    log(Severity::notice, "one");
    logError("two", ENOENT);
    logError("two", ENOENT);
    log(Severity::warning, "one");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "<4>one\n<5>one\n<3>two: No such file or directory\n<4>one\n");
}

}  // namespace
}  // namespace kovra::helper
