#include "BLE_kovra/platform/linux/bus/BusFailures.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

namespace kovra {
namespace {

TEST(BusFailuresTest, RecordWhatFailedAndWhyWhateverTheSignOfTheError) {
    BusFailures failures;
    failures.add("one", -ENOTCONN);
    failures.add("other", ENOTCONN);
    const std::string reason = ": " + std::string(std::strerror(ENOTCONN));
    EXPECT_EQ(failures.all(), (std::vector<std::string>{"one" + reason, "other" + reason}));
}

TEST(BusFailuresTest, KeepTheNewest) {
    BusFailures failures;
    for (std::size_t i = 0; i <= BusFailures::most; ++i) failures.add(std::to_string(i));
    EXPECT_EQ(failures.all().size(), BusFailures::most);
    EXPECT_EQ(failures.all().front(), "1");
    EXPECT_EQ(failures.all().back(), std::to_string(BusFailures::most));
}

}  // namespace
}  // namespace kovra
