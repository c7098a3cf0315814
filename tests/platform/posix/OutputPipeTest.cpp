#include "BLE_kovra/platform/posix/OutputPipe.h"

#include <gtest/gtest.h>

#include <string>

namespace kovra {
namespace {

TEST(OutputPipeTest, EndsOnceNobodyCanWriteToIt) {
    const auto pipe = OutputPipe::open();
    std::string text;
    EXPECT_TRUE(pipe->read(text)) << "nothing was written yet";
    pipe->closeWritingEnd();
    EXPECT_FALSE(pipe->read(text));
    EXPECT_EQ(text, "");
}

}  // namespace
}  // namespace kovra
