#include "BLE_kovra/platform/macos/loop/ApplicationEnd.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <thread>

#include "BLE_kovra/platform/Application.h"
#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"
#include "tests/platform/macos/FrameworkRig.h"

namespace kovra {
namespace {

// A delegate that writes the thread on which it is notified to standard error.
class Delegate : public ApplicationDelegate {
  public:
    void applicationDidFinishLaunching() override {}
    void applicationDidReopen() override {}
    void applicationDidResume() override {}
    void applicationShouldPerform(ApplicationAction) override {}
    ApplicationFacts facts() const override { return {}; }
    void applicationWillTerminate() override {
        const bool isMain = std::this_thread::get_id() == main_;
        std::fputs(isMain ? "notified on the main thread\n" : "notified on another thread\n", stderr);
    }

  private:
    std::thread::id main_ = std::this_thread::get_id();
};

// The process of an application. It is never destroyed: exit() finds it as it is.
struct Running {
    Running() { ApplicationEnd::expect(delegate, queue); }

    Delegate delegate;
    DispatchMainQueue queue;
};

void throwNow() { throw std::runtime_error("thrown"); }

// GoogleTest would catch the exception.
void throwUncaught() noexcept { throwNow(); }

// Each test lets a process end.
class ApplicationEndDeathTest : public testing::Test {
  protected:
    static Running& run() { return *new Running; }
};

TEST_F(ApplicationEndDeathTest, IsReportedOnceByExit) {
    EXPECT_EXIT(
        {
            run();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "^notified on the main thread\n$");
}

TEST_F(ApplicationEndDeathTest, IsNotReportedAgainByExit) {
    EXPECT_EXIT(
        {
            run();
            ApplicationEnd::notify();
            ApplicationEnd::notify();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "^notified on the main thread\n$");
}

TEST_F(ApplicationEndDeathTest, StopsTheQueueBeforeItIsReported) {
    EXPECT_EXIT(
        {
            Running& running = run();
            running.queue.async([] { std::fputs("a block ran\n", stderr); });
            ApplicationEnd::notify();
            FakeRunLoop::settle();
            std::fputs(ApplicationEnd::delegate() == nullptr ? "no delegate\n" : "a delegate\n", stderr);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "^notified on the main thread\nno delegate\n$");
}

TEST_F(ApplicationEndDeathTest, IsReportedAfterAnUncaughtException) {
    EXPECT_DEATH(
        {
            run();
            throwUncaught();
        },
        "^notified on the main thread\n");
}

TEST_F(ApplicationEndDeathTest, IsReportedOnTheMainThreadIfAnotherThreadFails) {
    EXPECT_DEATH(
        {
            run();
            std::thread(throwUncaught).detach();
            FakeRunLoop::turnUntil([] { return false; });
        },
        "^notified on the main thread\n");
}

TEST_F(ApplicationEndDeathTest, IsReportedOnTheThreadThatFailedIfTheMainThreadIsBusy) {
    EXPECT_DEATH(
        {
            run();
            std::thread(throwUncaught).join();
        },
        "^notified on another thread\n");
}

TEST_F(ApplicationEndDeathTest, CallsTheTerminateHandlerThatWasSetBefore) {
    EXPECT_DEATH(
        {
            std::set_terminate([] {
                std::fputs("the earlier handler\n", stderr);
                std::abort();
            });
            run();
            throwUncaught();
        },
        "^notified on the main thread\nthe earlier handler\n");
}

}  // namespace
}  // namespace kovra
