#include "BLE_kovra/platform/macos/loop/DispatchSignal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>

#include "tests/platform/macos/FrameworkRig.h"
#include "tests/platform/macos/fakes/FakeSources.h"

namespace kovra {
namespace {

class DispatchSignalTest : public testing::Test {
  protected:
    ~DispatchSignalTest() override {
        EXPECT_EQ(FakeSources::held(), 0U);
        std::signal(SIGTERM, SIG_DFL);
    }

    FrameworkRig frameworks_;
    int received_ = 0;
};

TEST_F(DispatchSignalTest, DeliversTheSignalOnTheMainQueueInsteadOfEndingTheProcess) {
    const DispatchSignal signal(SIGTERM, [this] { ++received_; });
    FakeSources::raise(SIGTERM);
    EXPECT_EQ(received_, 0) << "not inside the signal handler";
    FakeRunLoop::settle();
    EXPECT_EQ(received_, 1);
    FakeSources::raise(SIGTERM);
    FakeRunLoop::settle();
    EXPECT_EQ(received_, 2);
}

TEST_F(DispatchSignalTest, DeliversTheSignalWhileAnAlertIsOpen) {
    const DispatchSignal signal(SIGTERM, [this] { ++received_; });
    FakeSources::raise(SIGTERM);
    FakeRunLoop::settle(FakeRunLoop::alertMode());
    EXPECT_EQ(received_, 1);
}

TEST_F(DispatchSignalTest, DeliversNothingOnceItIsDestroyed) {
    auto signal = std::make_unique<DispatchSignal>(SIGTERM, [this] { ++received_; });
    FakeSources::raise(SIGTERM);
    signal.reset();
    FakeRunLoop::settle();
    FakeSources::raise(SIGTERM);
    FakeRunLoop::settle();
    EXPECT_EQ(received_, 0);
}

TEST_F(DispatchSignalTest, EndsTheProgramOnAnUncaughtException) {
    EXPECT_DEATH(
        {
            std::set_terminate([] {
                std::fputs("notified of the end", stderr);
                std::abort();
            });
            const DispatchSignal signal(SIGTERM, [] { throw std::runtime_error("thrown"); });
            FakeSources::raise(SIGTERM);
            try {
                FakeRunLoop::settle();
            } catch (...) {
                std::_Exit(0);
            }
        },
        "notified of the end");
}

}  // namespace
}  // namespace kovra
