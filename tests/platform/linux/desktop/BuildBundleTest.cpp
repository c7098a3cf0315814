#include "BLE_kovra/platform/linux/desktop/BuildBundle.h"

#include <gtest/gtest.h>

namespace kovra {
namespace {

TEST(BuildBundleTest, HasTheVersionOfTheProject) {
    EXPECT_EQ(BuildBundle().infoDictionaryValue("CFBundleShortVersionString"),
              InfoValue(std::string(KOVRA_PROJECT_VERSION)));
}

TEST(BuildBundleTest, HasNoOtherValue) {
    EXPECT_EQ(BuildBundle().infoDictionaryValue("CFBundleVersion"), std::nullopt);
    EXPECT_EQ(BuildBundle().infoDictionaryValue(""), std::nullopt);
}

}  // namespace
}  // namespace kovra
