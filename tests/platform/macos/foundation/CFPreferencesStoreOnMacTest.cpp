#include <CoreFoundation/CoreFoundation.h>

#include "BLE_kovra/platform/macos/foundation/CFHandle.h"
#include "BLE_kovra/platform/macos/foundation/CFPreferencesStore.h"
#include "tests/contracts/PreferencesStoreContract.h"

namespace kovra {
namespace {

// The preferences of this test program, whose name is their domain.
class CFPreferencesStoreOnMacDriver {
  public:
    CFPreferencesStoreOnMacDriver() { clear(); }
    ~CFPreferencesStoreOnMacDriver() { clear(); }
    CFPreferencesStoreOnMacDriver(const CFPreferencesStoreOnMacDriver&) = delete;
    CFPreferencesStoreOnMacDriver& operator=(const CFPreferencesStoreOnMacDriver&) = delete;

    PreferencesStore& store() { return store_; }
    void startAgain() { CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication); }

  private:
    static void clear() {
        const CFHandle keys(CFPreferencesCopyKeyList(kCFPreferencesCurrentApplication, kCFPreferencesCurrentUser,
                                                     kCFPreferencesAnyHost));
        for (CFIndex i = 0; keys && i < CFArrayGetCount(keys.get()); ++i) {
            CFPreferencesSetAppValue(static_cast<CFStringRef>(CFArrayGetValueAtIndex(keys.get(), i)), nullptr,
                                     kCFPreferencesCurrentApplication);
        }
        CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication);
    }

    CFPreferencesStore store_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(CFPreferencesStoreOnMac, PreferencesStoreContract, CFPreferencesStoreOnMacDriver);

}  // namespace
}  // namespace kovra
