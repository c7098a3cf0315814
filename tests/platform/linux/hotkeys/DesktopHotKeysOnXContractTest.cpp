#include <chrono>

#include "BLE_kovra/platform/linux/hotkeys/DesktopHotKeys.h"
#include "tests/contracts/HotKeyServiceContract.h"
#include "tests/platform/linux/hotkeys/XKeyRig.h"

namespace kovra {
namespace {

class XcbDriver : private XKeyRig {
  public:
    HotKeyService& service() { return hotKeys; }
    void settle() { turn(); }
    bool press() {
        keyboard.chord({key::control, key::alt, key::t});
        turn();
        return !keyboard.pressesInTheWindow().empty();
    }
    void takeByAnother() { keyboard.grabT(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(DesktopHotKeysOnX, HotKeyServiceContract, XcbDriver);

}  // namespace
}  // namespace kovra
