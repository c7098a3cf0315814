#include "tests/contracts/ApplicationContract.h"
#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeMainQueue.h"

namespace kovra {
namespace {

class FakeApplicationDriver {
  public:
    FakeApplicationDriver() {
        application_.onTerminating = [this] { queue_.stop(); };
    }
    Application& application() { return application_; }
    MainQueue& queue() { return queue_; }
    void runOut(ApplicationDelegate& delegate) {
        application_.run(delegate);
        queue_.run();
    }

  private:
    FakeMainQueue queue_;
    FakeApplication application_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeApplication, ApplicationContract, FakeApplicationDriver);

}  // namespace
}  // namespace kovra
