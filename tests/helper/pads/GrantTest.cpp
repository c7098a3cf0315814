#include "helper/pads/Grant.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/helper/Users.h"
#include "tests/helper/pads/MockInputs.h"

namespace kovra::helper {
namespace {

const MockInput plainMouse{.input = "input7",
                           .name = "Somebody's USB Mouse",
                           .properties = "ID_INPUT=1\nID_INPUT_MOUSE=1\n",
                           .bus = "0003",
                           .hid = "0003:046D:C077.0002"};

// An ordinary user can give a file only to a group that the user belongs to.
gid_t grantee() { return ::geteuid() == 0 ? alice : ::getegid(); }

TEST(GrantTest, LetsTheGroupWriteThePadAndItsTwin) {
    MockInputs computer;
    computer.addDevice(pad);
    computer.addDevice(twin);
    EXPECT_TRUE(grantPads(grantee(), InhibitedAttribute()));
    for (const char* input : {"input5", "input4"}) {
        EXPECT_EQ(computer.rights(input).st_gid, grantee());
        EXPECT_EQ(computer.rights(input).st_mode & 0777, 0664U);
    }
    EXPECT_EQ(computer.inhibited("input5"), "0");
}

// Earlier versions of the helper run as root without capabilities. They can unmute a pad only if root owns the
// attribute.
TEST(GrantTest, LeavesThePadToRoot) {
    MockInputs computer;
    computer.addDevice(pad);
    EXPECT_TRUE(grantPads(grantee(), InhibitedAttribute()));
    const WithoutCapabilities none;
    EXPECT_EQ(InhibitedAttribute().setInhibited("input5", true), 0);
    EXPECT_EQ(computer.inhibited("input5"), "1");
}

TEST(GrantTest, GivesNoOtherDevice) {
    MockInputs computer;
    MockInput external = pad;
    external.input = "input6";
    external.properties += "ID_INPUT_TOUCHPAD_INTEGRATION=external\n";
    external.hid = "0005:05AC:030E.0003";
    for (const MockInput& device : {pad, plainMouse, external}) computer.addDevice(device);
    EXPECT_TRUE(grantPads(grantee(), InhibitedAttribute()));
    for (const char* input : {"input7", "input6"}) EXPECT_EQ(computer.rights(input).st_mode & S_IWGRP, 0U);
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
