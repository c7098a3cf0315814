#include <sys/prctl.h>
#include <sys/wait.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/linux/session/SdEventApplication.h"
#include "tests/contracts/ApplicationContract.h"
#include "tests/support/Environment.h"

namespace kovra {
namespace {

class SdEventDriver {
  public:
    Application& application() { return application_; }
    MainQueue& queue() { return loop_; }
    void runOut(ApplicationDelegate& delegate) { application_.run(delegate); }

    SdEventApplication::Launches::Token listenForLaunch(SdEventApplication::Launches::Listener listener) {
        return application_.listenForLaunch(std::move(listener));
    }
    void reopen() { application_.reopen(); }
    void resume() { application_.resume(); }
    void perform(ApplicationAction action) { application_.perform(action); }
    std::optional<ApplicationFacts> facts() const { return application_.facts(); }

  private:
    SdEventLoop loop_;
    SdEventApplication application_{loop_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(SdEventApplication, ApplicationContract, SdEventDriver);

TEST(SdEventApplicationTest, NotifiesItsDelegateOfTheEndEvenIfABlockThrows) {
    struct Delegate : ApplicationDelegate {
        explicit Delegate(MainQueue& mainQueue) : queue(mainQueue) {}
        void applicationDidFinishLaunching() override {
            queue.async([] { throw std::runtime_error("out of memory"); });
        }
        void applicationDidReopen() override {}
        void applicationDidResume() override {}
        void applicationShouldPerform(ApplicationAction) override {}
        ApplicationFacts facts() const override { return {}; }
        void applicationWillTerminate() override { terminated = true; }
        MainQueue& queue;
        bool terminated = false;
    };
    SdEventDriver driver;
    Delegate delegate(driver.queue());
    EXPECT_THROW(driver.runOut(delegate), std::runtime_error);
    EXPECT_TRUE(delegate.terminated);
}

TEST(SdEventApplicationTest, ReportsTheEndOfItsLaunchOnce) {
    struct Delegate : ApplicationDelegate {
        explicit Delegate(SdEventDriver& its) : driver(its) {}
        void applicationDidFinishLaunching() override {
            order += "launch ";
            driver.queue().async([this] {
                order += "block ";
                driver.application().terminate();
            });
        }
        void applicationDidReopen() override {}
        void applicationDidResume() override {}
        void applicationShouldPerform(ApplicationAction) override {}
        ApplicationFacts facts() const override { return {}; }
        void applicationWillTerminate() override { order += "end"; }
        SdEventDriver& driver;
        std::string order;
    };
    SdEventDriver driver;
    Delegate delegate(driver);
    const auto token = driver.listenForLaunch([&] { delegate.order += "launched "; });
    driver.runOut(delegate);
    EXPECT_EQ(delegate.order, "launch launched block end");
}

TEST(SdEventApplicationTest, NotifiesItsDelegateBetweenItsLaunchAndItsEnd) {
    struct Delegate : ApplicationDelegate {
        explicit Delegate(SdEventDriver& its) : driver(its) {}
        void applicationDidFinishLaunching() override {
            driver.reopen();
            driver.resume();
            driver.queue().async([this] {
                driver.resume();
                driver.reopen();
                driver.perform(ApplicationAction::toggle);
                wasKnown = driver.facts() && driver.facts()->mode == "always";
                driver.application().terminate();
                driver.reopen();
                driver.resume();
                driver.perform(ApplicationAction::toggle);
            });
        }
        void applicationDidReopen() override { notifications += "reopened "; }
        void applicationDidResume() override { notifications += "resumed "; }
        void applicationShouldPerform(ApplicationAction action) override {
            notifications += action == ApplicationAction::toggle ? "toggles " : "? ";
        }
        ApplicationFacts facts() const override { return {.mode = "always"}; }
        void applicationWillTerminate() override {}
        SdEventDriver& driver;
        std::string notifications;
        bool wasKnown = false;
    };
    SdEventDriver driver;
    Delegate delegate(driver);
    driver.reopen();
    driver.resume();
    driver.perform(ApplicationAction::toggle);
    EXPECT_FALSE(driver.facts().has_value());
    driver.runOut(delegate);
    driver.reopen();
    driver.resume();
    driver.perform(ApplicationAction::toggle);
    EXPECT_FALSE(driver.facts().has_value());
    EXPECT_EQ(delegate.notifications, "reopened resumed resumed reopened toggles ");
    EXPECT_TRUE(delegate.wasKnown);
}

TEST(SdEventApplicationTest, BeepsInAProcessOfItsOwn) {
    Environment environment;
    environment.set("CANBERRA_DRIVER", "null");
    environment.unset({"DISPLAY"});
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    SdEventDriver().application().beep();
    int status = -1;
    EXPECT_GT(::waitpid(-1, &status, 0), 0);
    EXPECT_TRUE(WIFEXITED(status));
    ::prctl(PR_SET_CHILD_SUBREAPER, 0);
}

}  // namespace
}  // namespace kovra
