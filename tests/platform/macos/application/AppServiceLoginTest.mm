#include "BLE_kovra/platform/macos/application/AppServiceLogin.h"

#include "tests/contracts/LoginServiceContract.h"
#include "tests/platform/macos/gnustep/standins/AppService.h"

namespace kovra {
namespace {

class AppServiceLoginDriver {
  public:
    AppServiceLoginDriver() { [StandInLoginItems reset]; }
    LoginService& service() { return service_; }
    void obstruct() { [StandInLoginItems obstruct]; }

  private:
    AppServiceLogin service_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(AppServiceLogin, LoginServiceContract, AppServiceLoginDriver);

class AppServiceLoginTest : public testing::Test {
  protected:
    AppServiceLoginTest() { [StandInLoginItems reset]; }

    AppServiceLogin service_;
};

TEST_F(AppServiceLoginTest, OpensTheListOfLoginItemsIfTheUserMustApprove) {
    [StandInLoginItems setStatus:SMAppServiceStatusRequiresApproval];
    EXPECT_TRUE(service_.registerApplication());
    EXPECT_EQ([StandInLoginItems pagesOpened], 1);
    EXPECT_EQ(service_.status(), LoginStatus::requiresApproval);
}

TEST_F(AppServiceLoginTest, OpensNothingFromAnyOtherStatus) {
    for (const SMAppServiceStatus status :
         {SMAppServiceStatusNotRegistered, SMAppServiceStatusEnabled, SMAppServiceStatusNotFound}) {
        [StandInLoginItems setStatus:status];
        EXPECT_TRUE(service_.registerApplication());
        EXPECT_EQ(service_.status(), LoginStatus::enabled);
        EXPECT_TRUE(service_.unregisterApplication());
    }
    EXPECT_EQ([StandInLoginItems pagesOpened], 0);
}

}  // namespace
}  // namespace kovra
