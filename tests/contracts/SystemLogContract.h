#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "BLE_kovra/platform/SystemLog.h"

namespace kovra {

// The contract of SystemLog. A Driver provides `log()`, and `entries()`, the texts of all entries in that log.
template <typename Driver>
class SystemLogContract : public testing::Test {
  protected:
    using Entries = std::vector<std::string>;

    void log(std::string_view line) { driver_.log().log(line); }

    Driver driver_;
};

TYPED_TEST_SUITE_P(SystemLogContract);

TYPED_TEST_P(SystemLogContract, MakesOneEntryOfALine) {
    this->log("ble-kovra: не удалось записать флаг (on): No space left on device");
    EXPECT_EQ(this->driver_.entries(),
              (typename TestFixture::Entries{"ble-kovra: не удалось записать флаг (on): No space left on device"}));
}

TYPED_TEST_P(SystemLogContract, LogsALineLiterally) {
    const std::string line = "ble-kovra: 100% %s %n %d %% %1$s \\n {} %m";
    this->log(line);
    EXPECT_EQ(this->driver_.entries(), typename TestFixture::Entries{line});
}

TYPED_TEST_P(SystemLogContract, KeepsTheOrderAndRepetitions) {
    for (const char* line : {"b", "a", "a", "c"}) this->log(line);
    EXPECT_EQ(this->driver_.entries(), (typename TestFixture::Entries{"b", "a", "a", "c"}));
}

TYPED_TEST_P(SystemLogContract, MakesOneEntryOfALineWithLineFeeds) {
    this->log("ble-kovra: a\nPRIORITY=0\n\nb");
    EXPECT_EQ(this->driver_.entries().size(), 1U);
}

TYPED_TEST_P(SystemLogContract, MakesOneEntryOfAnyBytes) {
    this->log("\xFF\xC3");
    this->log(std::string(100000, 'x'));
    EXPECT_EQ(this->driver_.entries(), (typename TestFixture::Entries{"\xFF\xC3", std::string(100000, 'x')}));
}

REGISTER_TYPED_TEST_SUITE_P(SystemLogContract, MakesOneEntryOfALine, LogsALineLiterally, KeepsTheOrderAndRepetitions,
                            MakesOneEntryOfALineWithLineFeeds, MakesOneEntryOfAnyBytes);

}  // namespace kovra
