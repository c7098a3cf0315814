#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

#include <utility>
#include "tests/contracts/MainQueueContract.h"

namespace kovra {
namespace {

// A driver that runs the real loop in real time, until a block of the test has run.
class SdEventDriver {
  public:
    MainQueue& queue() { return loop_; }
    void settle() {
        // Three rounds run the queued blocks, the blocks that they queue, and the blocks that these queue in turn.
        for (int round = 0; round < 3; ++round)
            passOnce([this](MainQueue::Block done) { loop_.async(std::move(done)); });
    }
    void let(std::chrono::nanoseconds duration) {
        passOnce([&](MainQueue::Block done) { loop_.asyncAfter(duration, std::move(done)); });
    }
    std::chrono::nanoseconds now() const { return std::chrono::steady_clock::now().time_since_epoch(); }
    void terminate() { loop_.stop(); }

  private:
    template <typename Queue>
    void passOnce(Queue queueBlock) {
        auto done = std::make_shared<bool>(false);
        queueBlock([done] { *done = true; });
        loop_.runUntil([done] { return *done; });
    }

    SdEventLoop loop_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(SdEventLoop, MainQueueContract, SdEventDriver);

}  // namespace
}  // namespace kovra
