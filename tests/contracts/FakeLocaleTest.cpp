#include "tests/contracts/LocaleContract.h"
#include "tests/fakes/FakeLocale.h"

namespace kovra {
namespace {

class FakeLocaleDriver {
  public:
    const Locale& locale() const { return locale_; }

  private:
    FakeLocale locale_{{"en-GB", "ru-RU"}};
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeLocale, LocaleContract, FakeLocaleDriver);

}  // namespace
}  // namespace kovra
