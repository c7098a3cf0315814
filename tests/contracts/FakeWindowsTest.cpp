#include "tests/contracts/WindowHostContract.h"

#include "tests/fakes/FakeMainQueue.h"
#include "tests/fakes/FakeWindows.h"

namespace kovra {
namespace {

class FakeWindowsDriver {
  public:
    WindowHost& host() { return windows_; }
    void settle() {
        queue_.run();
        windows_.draw();
    }
    bool isSeen() const { return windows_.isVisible; }
    std::string title() const { return windows_.title; }
    std::string content() const { return ViewDump::of(windows_.shown); }
    void close() { windows_.close(); }
    void turn(const std::vector<std::string>& path, bool isOn) {
        std::get<Toggle>(viewAt(windows_.shown, path).kind).set(isOn);
    }
    void choose(const std::vector<std::string>& path, const std::string& tag) {
        std::get<Picker>(viewAt(windows_.shown, path).kind).select(tag);
    }

  private:
    FakeMainQueue queue_;
    FakeWindows windows_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeWindows, WindowHostContract, FakeWindowsDriver);

}  // namespace
}  // namespace kovra
