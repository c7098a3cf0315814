#include <CoreFoundation/CoreFoundation.h>

#include <array>

#include "BLE_kovra/platform/macos/foundation/CFLocale.h"
#include "BLE_kovra/platform/macos/foundation/CFText.h"
#include "tests/contracts/LocaleContract.h"

namespace kovra {
namespace {

// The languages of this program alone, as System Settings can choose them for an application.
class CFLocaleOnMacDriver {
  public:
    CFLocaleOnMacDriver() {
        const auto first = cfText("en-GB");
        const auto second = cfText("ru-RU");
        std::array<const void*, 2> languages{first.get(), second.get()};
        const CFHandle array(
            CFArrayCreate(kCFAllocatorDefault, languages.data(), languages.size(), &kCFTypeArrayCallBacks));
        CFPreferencesSetAppValue(cfText("AppleLanguages").get(), array.get(), kCFPreferencesCurrentApplication);
    }
    ~CFLocaleOnMacDriver() {
        CFPreferencesSetAppValue(cfText("AppleLanguages").get(), nullptr, kCFPreferencesCurrentApplication);
    }
    CFLocaleOnMacDriver(const CFLocaleOnMacDriver&) = delete;
    CFLocaleOnMacDriver& operator=(const CFLocaleOnMacDriver&) = delete;

    const Locale& locale() const { return locale_; }

  private:
    CFLocale locale_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(CFLocaleOnMac, LocaleContract, CFLocaleOnMacDriver);

}  // namespace
}  // namespace kovra
