#include <optional>

#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"
#include "tests/contracts/MainQueueContract.h"
#include "tests/platform/macos/FrameworkRig.h"

namespace kovra {
namespace {

class DispatchDriver {
  public:
    MainQueue& queue() { return queue_; }
    void settle() { FakeRunLoop::settle(); }
    void let(std::chrono::nanoseconds duration) { FakeRunLoop::let(duration); }
    std::chrono::nanoseconds now() const { return std::chrono::steady_clock::now().time_since_epoch(); }
    void terminate() { queue_.stop(); }

  private:
    FrameworkRig frameworks_;
    DispatchMainQueue queue_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(DispatchMainQueue, MainQueueContract, DispatchDriver);

TEST(DispatchMainQueueTest, RunsBlocksWhileAnAlertIsOpen) {
    const FrameworkRig frameworks;
    DispatchMainQueue queue;
    bool hasRun = false;
    queue.async([&] { hasRun = true; });
    FakeRunLoop::settle(FakeRunLoop::alertMode());
    EXPECT_TRUE(hasRun);
}

TEST(DispatchMainQueueTest, DropsQueuedBlocksWhenItIsDestroyed) {
    const FrameworkRig frameworks;
    int ran = 0;
    const auto kept = std::make_shared<int>();
    auto queue = std::make_optional<DispatchMainQueue>();
    queue->async([&ran, kept] { ++ran; });
    const auto task = queue->asyncAfter(std::chrono::hours(1), [&ran, kept] { ++ran; });
    queue.reset();
    FakeRunLoop::settle();
    FakeRunLoop::endProcess();
    EXPECT_EQ(ran, 0);
    EXPECT_EQ(kept.use_count(), 1) << "a block that nobody released";
    task->cancel();
}

TEST(DispatchMainQueueTest, DoesNotRunATwoSecondBlockEarly) {
    const FrameworkRig frameworks;
    DispatchMainQueue queue;
    bool hasRun = false;
    const auto task = queue.asyncAfter(std::chrono::seconds(2), [&] { hasRun = true; });
    FakeRunLoop::let(std::chrono::milliseconds(50));
    EXPECT_FALSE(hasRun);
}

TEST(DispatchMainQueueTest, RunsADelayedBlockInTimeWhileTheSystemConsidersTheProgramIdle) {
    const FrameworkRig frameworks;
    DispatchMainQueue queue;
    bool hasRun = false;
    const auto task = queue.asyncAfter(std::chrono::milliseconds(20), [&] { hasRun = true; });
    FakeRunLoop::nap(true);
    FakeRunLoop::let(std::chrono::milliseconds(100));
    EXPECT_TRUE(hasRun);
}

TEST(DispatchMainQueueTest, AllowsADelayedBlockToCancelItself) {
    const FrameworkRig frameworks;
    DispatchMainQueue queue;
    int ran = 0;
    std::unique_ptr<DelayedTask> task;
    task = queue.asyncAfter(std::chrono::milliseconds(1), [&] {
        task->cancel();
        ++ran;
    });
    FakeRunLoop::let(std::chrono::milliseconds(20));
    task->cancel();
    EXPECT_EQ(ran, 1);
}

TEST(DispatchMainQueueTest, ReleasesACancelledBlockAtOnce) {
    const FrameworkRig frameworks;
    DispatchMainQueue queue;
    const auto kept = std::make_shared<int>();
    const auto task = queue.asyncAfter(std::chrono::hours(1), [kept] {});
    task->cancel();
    EXPECT_EQ(kept.use_count(), 1);
}

}  // namespace
}  // namespace kovra
