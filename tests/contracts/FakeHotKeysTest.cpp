#include "tests/contracts/HotKeyServiceContract.h"
#include "tests/fakes/FakeHotKeys.h"

namespace kovra {
namespace {

class FakeHotKeysDriver {
  public:
    HotKeyService& service() { return hotKeys_; }
    void settle() {}
    bool press() {
        const bool isRegistered = !hotKeys_.registered.empty();
        hotKeys_.press();
        return !isRegistered;
    }
    void takeByAnother() { hotKeys_.takenByAnother = true; }

  private:
    FakeHotKeys hotKeys_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeHotKeys, HotKeyServiceContract, FakeHotKeysDriver);

}  // namespace
}  // namespace kovra
