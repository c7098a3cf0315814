#include <memory>

#include "BLE_kovra/platform/linux/desktop/JsonPreferencesStore.h"
#include "tests/contracts/PreferencesStoreContract.h"
#include "tests/fakes/FakeLog.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

class JsonDriver {
  public:
    JsonDriver() { startAgain(); }
    PreferencesStore& store() { return *store_; }
    void startAgain() {
        store_.reset();  // the destructor saves
        store_ = std::make_unique<JsonPreferencesStore>(folder_ / "preferences.json", log_);
    }

  private:
    TempFolder folder_;
    FakeLog log_;
    std::unique_ptr<JsonPreferencesStore> store_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(JsonPreferencesStore, PreferencesStoreContract, JsonDriver);

}  // namespace
}  // namespace kovra
