#include "BLE_kovra/platform/linux/control/RunningApplication.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/session/SingleInstance.h"
#include "tests/platform/linux/session/OtherProgram.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra::control {
namespace {

using Contact = Application::Contact;

// ProgramTest has the running application itself.
class RunningApplicationTest : public testing::Test {
  protected:
    RunningApplicationTest() { environment_.unset({"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}); }
    Environment environment_;
    PrivateBus daemon_{"DBUS_SESSION_BUS_ADDRESS"};
};

TEST_F(RunningApplicationTest, IsAbsentIfNobodyOwnsItsName) {
    EXPECT_EQ(askApplication().contact, Contact::absent);
    EXPECT_EQ(askForAction("toggle"), Performed::notRunning);
}

TEST_F(RunningApplicationTest, CannotBeReachedWithoutABus) {
    daemon_.end();
    EXPECT_EQ(askApplication().contact, Contact::noBus);
    EXPECT_NE(askApplication().error, "");
    EXPECT_EQ(askForAction("toggle"), Performed::notRunning);
}

TEST_F(RunningApplicationTest, CannotBeReachedThroughABusThatRefusesTheUser) {
    Environment refusing;
    refusing.set("DBUS_SESSION_BUS_ADDRESS", "unixexec:path=/bin/false");
    EXPECT_EQ(askApplication().contact, Contact::noBus);
    EXPECT_NE(askApplication().error, "");
    EXPECT_EQ(askForAction("toggle"), Performed::notRunning);
}

TEST_F(RunningApplicationTest, IsAnotherProgramIfItsAnswersAreOthers) {
    const OtherProgram other(SingleInstance::busName, {"Activate", "Version", "GetAll"});
    EXPECT_EQ(askApplication().contact, Contact::foreign);
    EXPECT_EQ(askForAction("toggle"), Performed::refused);
}

TEST_F(RunningApplicationTest, ReceivesTheActionAndTheToken) {
    environment_.set("XDG_ACTIVATION_TOKEN", "a token");
    const OtherProgram other(SingleInstance::busName, {"ActivateAction"});
    EXPECT_EQ(askForAction("settings"), Performed::yes);
    EXPECT_EQ(other.calls(),
              (std::vector<std::string>{"ActivateAction \"settings\" [] [\"activation-token\":\"a token\"]"}));
}

}  // namespace
}  // namespace kovra::control
