#include "tests/contracts/HIDManagerContract.h"
#include "tests/fakes/FakeHID.h"
#include "tests/fakes/FakeMainQueue.h"

namespace kovra {
namespace {

class FakeHIDDriver {
  public:
    HIDService& service() { return hid_; }
    FakeHID::Plugged attach(const DeviceDescription& device) { return hid_.attach(device); }
    void detach(const FakeHID::Plugged& plugged) { hid_.detach(plugged); }
    void rename(const FakeHID::Plugged& plugged, const std::string& name) {
        for (const std::uint64_t number : plugged) hid_.rename(number, name);
    }
    void settle() { queue_.run(); }

  private:
    FakeMainQueue queue_;
    FakeHID hid_{queue_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeHID, HIDManagerContract, FakeHIDDriver);

}  // namespace
}  // namespace kovra
