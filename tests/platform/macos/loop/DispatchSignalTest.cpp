#include "BLE_kovra/platform/macos/loop/DispatchSignal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>

#include "tests/platform/macos/FrameworkRig.h"
#include "tests/platform/macos/fakes/FakeSignals.h"

namespace kovra {
namespace {

class DispatchSignalTest : public testing::Test {
  protected:
    ~DispatchSignalTest() override {
        EXPECT_EQ(FakeSignals::held(), 0U);
        std::signal(SIGTERM, SIG_DFL);
    }

    FrameworkRig frameworks_;
    int heard_ = 0;
};

TEST_F(DispatchSignalTest, HearsTheSignalOnTheMainQueueInPlaceOfEnding) {
    const DispatchSignal signal(SIGTERM, [this] { ++heard_; });
    FakeSignals::raise(SIGTERM);
    EXPECT_EQ(heard_, 0) << "not inside the signal";
    FakeRunLoop::settle();
    EXPECT_EQ(heard_, 1);
    FakeSignals::raise(SIGTERM);
    FakeRunLoop::settle();
    EXPECT_EQ(heard_, 2);
}

TEST_F(DispatchSignalTest, HearsItWhileAnAlertRuns) {
    const DispatchSignal signal(SIGTERM, [this] { ++heard_; });
    FakeSignals::raise(SIGTERM);
    FakeRunLoop::settle(FakeRunLoop::alertMode());
    EXPECT_EQ(heard_, 1);
}

TEST_F(DispatchSignalTest, HearsNothingOnceItIsGone) {
    auto signal = std::make_unique<DispatchSignal>(SIGTERM, [this] { ++heard_; });
    FakeSignals::raise(SIGTERM);
    signal.reset();
    FakeRunLoop::settle();
    FakeSignals::raise(SIGTERM);
    FakeRunLoop::settle();
    EXPECT_EQ(heard_, 0);
}

TEST_F(DispatchSignalTest, EndsTheProgramWhereNobodyCatchesWhatIsThrownAtIt) {
    EXPECT_DEATH(
        {
            std::set_terminate([] {
                std::fputs("told of the end", stderr);
                std::abort();
            });
            const DispatchSignal signal(SIGTERM, [] { throw std::runtime_error("thrown"); });
            FakeSignals::raise(SIGTERM);
            try {
                FakeRunLoop::settle();
            } catch (...) {
                std::_Exit(0);
            }
        },
        "told of the end");
}

}  // namespace
}  // namespace kovra
