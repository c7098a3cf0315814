#include "BLE_kovra/system/LoginItem.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "tests/fakes/FakeLog.h"
#include "tests/fakes/FakeLogin.h"

namespace kovra {
namespace {

using Texts = std::vector<std::string>;

TEST(LoginItemTest, HasNoInstances) { EXPECT_FALSE(std::is_default_constructible_v<LoginItem>); }

TEST(LoginItemTest, UnregistersIfEnabled) {
    FakeLogin login;
    FakeLog log;
    login.current = LoginStatus::enabled;
    LoginItem::toggle(login, log);
    EXPECT_EQ(login.calls, Texts{"unregister"});
    EXPECT_EQ(login.current, LoginStatus::notRegistered);
}

TEST(LoginItemTest, RegistersFromEveryOtherStatus) {
    for (const LoginStatus status :
         {LoginStatus::notRegistered, LoginStatus::requiresApproval, LoginStatus::notFound}) {
        FakeLogin login;
        FakeLog log;
        login.current = status;
        LoginItem::toggle(login, log);
        EXPECT_EQ(login.calls, Texts{"register"});
        EXPECT_EQ(log.lines, Texts{});
    }
}

TEST(LoginItemTest, RegistersAgainWhileTheUserHasNotApproved) {
    FakeLogin login;
    FakeLog log;
    login.afterRegistering = LoginStatus::requiresApproval;
    LoginItem::toggle(login, log);
    LoginItem::toggle(login, log);
    EXPECT_EQ(login.calls, (Texts{"register", "register"}));
}

TEST(LoginItemTest, ReadsTheStatusOnce) {
    FakeLogin login;
    FakeLog log;
    LoginItem::toggle(login, log);
    EXPECT_EQ(login.reads, 1);
}

TEST(LoginItemTest, LogsAFailureInOneLineAndDoesNotRetry) {
    for (const LoginStatus status : {LoginStatus::enabled, LoginStatus::notRegistered}) {
        FakeLogin login;
        FakeLog log;
        login.current = status;
        login.reasonToFail = "Read-only %d file system";
        LoginItem::toggle(login, log);
        EXPECT_EQ(login.calls.size(), 1U);
        EXPECT_EQ(log.lines, Texts{"ble-kovra: не удалось переключить автозапуск: Read-only %d file system"});
    }
}

}  // namespace
}  // namespace kovra
