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

    void reopen() { application_.reopen(); }

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

TEST(SdEventApplication, TellsItsDelegateOfAFurtherStartBetweenItsLaunchAndItsEnd) {
    struct Delegate : ApplicationDelegate {
        explicit Delegate(SdEventDriver& its) : driver(its) {}
        void applicationDidFinishLaunching() override {
            driver.reopen();
            driver.queue().async([this] {
                driver.reopen();
                driver.application().terminate();
                driver.reopen();
            });
        }
        void applicationDidReopen() override { ++reopened; }
        void applicationWillTerminate() override {}
        SdEventDriver& driver;
        int reopened = 0;
    };
    SdEventDriver driver;
    Delegate delegate(driver);
    driver.reopen();
    driver.runOut(delegate);
    driver.reopen();
    EXPECT_EQ(delegate.reopened, 2);
}

}  // namespace
}  // namespace kovra
