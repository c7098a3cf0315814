#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "BLE_kovra/platform/FileSystem.h"

namespace kovra {

// The contract of FileSystem. A Driver provides `files()`, and `path()`: the path of a file that does not exist yet.
// `content()` reads that file. After `obstruct()` every write to that file fails.
template <typename Driver>
class FileSystemContract : public testing::Test {
  protected:
    Outcome write(std::string_view text) { return driver_.files().writeWholeFile(driver_.path(), text); }

    Driver driver_;
};

TYPED_TEST_SUITE_P(FileSystemContract);

TYPED_TEST_P(FileSystemContract, CreatesAMissingFile) {
    EXPECT_FALSE(this->driver_.files().fileExists(this->driver_.path()));
    EXPECT_TRUE(this->write("on"));
    EXPECT_TRUE(this->driver_.files().fileExists(this->driver_.path()));
}

TYPED_TEST_P(FileSystemContract, ReplacesTheWholeContent) {
    const std::string bytes("\0\xFF\n%s\r\xD0\xB4", 8);
    for (const std::string& text :
         std::vector<std::string>{"on", "off", "on", "on", "off", "off", "", "longer", "on", bytes}) {
        const Outcome outcome = this->write(text);
        EXPECT_TRUE(outcome);
        EXPECT_EQ(outcome.reason(), "");
        EXPECT_EQ(this->driver_.content(), text);
    }
}

TYPED_TEST_P(FileSystemContract, ReturnsTheReasonOfAFailure) {
    this->driver_.obstruct();
    const Outcome outcome = this->write("on");
    EXPECT_FALSE(outcome);
    EXPECT_NE(outcome.reason(), "");
}

REGISTER_TYPED_TEST_SUITE_P(FileSystemContract, CreatesAMissingFile, ReplacesTheWholeContent,
                            ReturnsTheReasonOfAFailure);

}  // namespace kovra
