#include "tests/contracts/SystemLogContract.h"
#include "tests/fakes/FakeLog.h"

namespace kovra {
namespace {

class FakeLogDriver {
  public:
    SystemLog& log() { return log_; }
    const std::vector<std::string>& entries() const { return log_.lines; }

  private:
    FakeLog log_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeLog, SystemLogContract, FakeLogDriver);

}  // namespace
}  // namespace kovra
