#include "tests/contracts/HotKeyServiceContract.h"
#include "tests/platform/linux/hotkeys/PortalRig.h"

namespace kovra {
namespace {

class PortalDriver : private PortalRig {
  public:
    // The user has accepted the hot key at an earlier start.
    PortalDriver() { portal.remembered = {"TEST-1"}; }

    HotKeyService& service() { return hotKeys; }
    using PortalRig::settle;
    bool press() {
        const bool isKept = portal.press();
        settle();
        return !isKept;
    }
    void takeByAnother() { portal.isTakenByAnother = true; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(DesktopHotKeysOnPortal, HotKeyServiceContract, PortalDriver);

}  // namespace
}  // namespace kovra
