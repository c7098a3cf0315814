#include <algorithm>

#include "BLE_kovra/platform/macos/foundation/CFLocale.h"
#include "tests/contracts/LocaleContract.h"
#include "tests/platform/macos/FrameworkRig.h"

namespace kovra {
namespace {

using Names = std::vector<std::string>;

class CFLocaleDriver {
  public:
    const Locale& locale() const { return locale_; }

  private:
    FrameworkRig frameworks_;
    CFLocale locale_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(CFLocale, LocaleContract, CFLocaleDriver);

class CFLocaleTest : public testing::Test {
  protected:
    bool areEqual(const std::string& first, const std::string& second) const {
        return !locale_.isAscending(first, second) && !locale_.isAscending(second, first);
    }

    FrameworkRig frameworks_;
    CFLocale locale_;
};

TEST_F(CFLocaleTest, ReturnsNoLanguageIfNoneIsListed) {
    FakeSettings::languages = {};
    EXPECT_EQ(locale_.preferredLanguages(), Names());
}

TEST_F(CFLocaleTest, OrdersNamesAsTheUsersRegionDoes) {
    Names names{"Zebra", "Äpfel", "Apfel", "яблоко", "Ёлка"};
    std::ranges::stable_sort(names, [this](const auto& a, const auto& b) { return locale_.isAscending(a, b); });
    EXPECT_EQ(names, (Names{"Apfel", "Äpfel", "Zebra", "Ёлка", "яблоко"}));
}

TEST_F(CFLocaleTest, TreatsAPrecomposedLetterAsTheLetterAndItsMark) {
    EXPECT_TRUE(areEqual("Mäuse", "Ma\xCC\x88use"));
    EXPECT_TRUE(areEqual("Ёлка", "е\xCC\x88лка"));
    EXPECT_FALSE(areEqual("Mäuse", "Mause"));
}

TEST_F(CFLocaleTest, ComparesTheWholeName) {
    EXPECT_TRUE(locale_.isAscending("Mouse", "Mouse 2"));
    EXPECT_TRUE(locale_.isAscending("Mouse 1", "Mouse 2"));
    EXPECT_FALSE(locale_.isAscending("Mouse 2", "Mouse"));
    EXPECT_TRUE(locale_.isAscending("😀", "😀😀"));
}

}  // namespace
}  // namespace kovra
