#include "tests/contracts/LoginServiceContract.h"
#include "tests/fakes/FakeLogin.h"

namespace kovra {
namespace {

class FakeLoginDriver {
  public:
    LoginService& service() { return service_; }
    void obstruct() { service_.reasonToFail = "Permission denied"; }

  private:
    FakeLogin service_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeLogin, LoginServiceContract, FakeLoginDriver);

}  // namespace
}  // namespace kovra
