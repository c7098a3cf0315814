#include "helper/pads/Grant.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/helper/Users.h"
#include "tests/helper/pads/MockInputs.h"

namespace kovra::helper {
namespace {

const MockInput mouse{.input = "input7",
                      .name = "Somebody's USB Mouse",
                      .properties = "ID_INPUT=1\nID_INPUT_MOUSE=1\n",
                      .bus = "0003",
                      .hid = "0003:046D:C077.0002"};

// Only root can give a file to another user.
uid_t grantee() { return ::geteuid() == 0 ? alice : ::geteuid(); }

TEST(GrantTest, GivesThePadAndItsTwinToTheUser) {
    MockInputs computer;
    computer.addDevice(pad);
    computer.addDevice(twin);
    EXPECT_TRUE(grantPads(grantee(), InhibitedAttribute()));
    EXPECT_EQ(computer.owner("input5"), grantee());
    EXPECT_EQ(computer.owner("input4"), grantee());
    EXPECT_EQ(computer.inhibited("input5"), "0");
}

TEST(GrantTest, GivesNoOtherDevice) {
    MockInputs computer;
    MockInput external = pad;
    external.input = "input6";
    external.properties += "ID_INPUT_TOUCHPAD_INTEGRATION=external\n";
    external.hid = "0005:05AC:030E.0003";
    for (const MockInput& device : {pad, mouse, external}) computer.addDevice(device);
    EXPECT_TRUE(grantPads(grantee(), InhibitedAttribute()));
    EXPECT_EQ(computer.owner("input7"), ::geteuid());
    EXPECT_EQ(computer.owner("input6"), ::geteuid());
}

TEST(GrantTest, FailsIfTheAttributeCannotBeGiven) {
    MockInputs computer;
    computer.addDevice(pad);
    const WithoutCapabilities none;
    EXPECT_FALSE(grantPads(alice, InhibitedAttribute()));
}

TEST(GrantTest, LeavesAloneWhatTheKernelCannotInhibit) {
    MockInputs computer;
    computer.addDevice(pad);
    computer.removeAttribute("input5");
    EXPECT_TRUE(grantPads(grantee(), InhibitedAttribute()));
}

}  // namespace
}  // namespace kovra::helper
