#include "tests/contracts/MainQueueContract.h"
#include "tests/fakes/FakeMainQueue.h"

namespace kovra {
namespace {

class FakeMainQueueDriver {
  public:
    MainQueue& queue() { return queue_; }
    void settle() { queue_.run(); }
    void let(std::chrono::nanoseconds duration) { queue_.advance(duration); }
    std::chrono::nanoseconds now() const { return queue_.now(); }
    void terminate() { queue_.stop(); }

  private:
    FakeMainQueue queue_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeMainQueue, MainQueueContract, FakeMainQueueDriver);

}  // namespace
}  // namespace kovra
