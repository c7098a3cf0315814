#include <stdexcept>

#include "BLE_kovra/platform/linux/SdEventApplication.h"
#include "BLE_kovra/platform/linux/SdEventLoop.h"
#include "tests/contracts/ApplicationContract.h"

namespace kovra {
namespace {

class SdEventDriver {
  public:
    Application& application() { return application_; }
    MainQueue& queue() { return loop_; }
    void runOut(ApplicationDelegate& delegate) { application_.run(delegate); }

  private:
    SdEventLoop loop_;
    SdEventApplication application_{loop_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(SdEvent, ApplicationContract, SdEventDriver);

TEST(SdEventApplication, TellsItsDelegateOfTheEndAlsoWhenABlockFails) {
    struct Delegate : ApplicationDelegate {
        explicit Delegate(MainQueue& mainQueue) : queue(mainQueue) {}
        void applicationDidFinishLaunching() override {
            queue.async([] { throw std::runtime_error("out of memory"); });
        }
        void applicationDidReopen() override {}
        void applicationWillTerminate() override { terminated = true; }
        MainQueue& queue;
        bool terminated = false;
    };
    SdEventDriver driver;
    Delegate delegate(driver.queue());
    EXPECT_THROW(driver.runOut(delegate), std::runtime_error);
    EXPECT_TRUE(delegate.terminated);
}

}  // namespace
}  // namespace kovra
