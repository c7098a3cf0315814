#include "BLE_kovra/platform/macos/foundation/CFPreferencesStore.h"
#include "tests/contracts/PreferencesStoreContract.h"
#include "tests/platform/macos/FrameworkRig.h"

namespace kovra {
namespace {

class CFPreferencesStoreDriver {
  public:
    PreferencesStore& store() { return store_; }
    void startAgain() { FakeDefaults::startAgain(); }

  private:
    FrameworkRig frameworks_;
    CFPreferencesStore store_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(CFPreferencesStore, PreferencesStoreContract, CFPreferencesStoreDriver);

TEST(CFPreferencesStoreTest, ReadsIntegersAsNumbers) {
    const FrameworkRig frameworks;
    const CFStringRef key = newText("isEnabled");
    const CFNumberRef one = newInteger(1);
    CFPreferencesSetAppValue(key, one, kCFPreferencesCurrentApplication);
    CFRelease(one);
    CFRelease(key);
    const CFPreferencesStore store;
    EXPECT_EQ(store.object("isEnabled"), PreferenceValue(1.0));
    EXPECT_TRUE(store.boolean("isEnabled"));
}

}  // namespace
}  // namespace kovra
