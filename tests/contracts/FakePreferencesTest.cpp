#include "tests/contracts/PreferencesStoreContract.h"
#include "tests/fakes/FakePreferences.h"

namespace kovra {
namespace {

class FakePreferencesDriver {
  public:
    PreferencesStore& store() { return store_; }
    void startAgain() {}  // the stored values persist

  private:
    FakePreferences store_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakePreferences, PreferencesStoreContract, FakePreferencesDriver);

}  // namespace
}  // namespace kovra
