#include "helper/pads/PadRules.h"

#include <gtest/gtest.h>
#include <linux/input.h>

#include <ostream>
#include <string>
#include <vector>

namespace kovra::helper {
namespace {

struct Known {
    const char* what;
    InputProperties device;
    bool isBuiltIn;
};

void PrintTo(const Known& known, std::ostream* out) { *out << known.what; }

// Devices with the properties that udev 252 sets, unless the text of a device says otherwise. udev 252 does not set
// ID_INPUT_TOUCHPAD_INTEGRATION for devices on I2C.
const std::vector<Known> knownDevices{
    {"Synaptics pad on PS/2",
     {.name = "SynPS/2 Synaptics TouchPad",
      .isTouchpad = true,
      .integration = "internal",
      .bus = BUS_I8042,
      .vendor = 0x0002},
     true},
    {"ALPS pad on PS/2",
     {.name = "AlpsPS/2 ALPS DualPoint TouchPad",
      .isTouchpad = true,
      .integration = "internal",
      .bus = BUS_I8042,
      .vendor = 0x0002},
     true},
    {"ELAN pad on PS/2 without a property of udev",
     {.name = "ETPS/2 Elantech Touchpad", .isTouchpad = true, .bus = BUS_I8042, .vendor = 0x0002},
     true},
    {"ELAN pad on I2C by its own driver",
     {.name = "Elan Touchpad", .isTouchpad = true, .bus = BUS_I2C, .vendor = 0x04f3},
     true},
    {"ELAN pad on I2C",
     {.name = "ELAN1200:00 04F3:3045 Touchpad", .isTouchpad = true, .bus = BUS_I2C, .vendor = 0x04f3, .hid = "h"},
     true},
    {"Synaptics pad on I2C",
     {.name = "SYNA8004:00 06CB:CD8B Touchpad", .isTouchpad = true, .bus = BUS_I2C, .vendor = 0x06cb, .hid = "h"},
     true},
    {"Synaptics pad on SMBus",
     {.name = "Synaptics TM3276-022", .isTouchpad = true, .integration = "internal", .bus = BUS_RMI, .vendor = 0x06cb},
     true},
    {"Apple's pad on SPI", {.name = "Apple SPI Touchpad", .isTouchpad = true, .bus = BUS_SPI, .vendor = 0x05ac}, true},
    {"Apple's pad on USB, in a fixed port",
     {.name = "bcm5974",
      .isTouchpad = true,
      .integration = "internal",
      .bus = BUS_USB,
      .vendor = 0x05ac,
      .port = UsbPort::fixed},
     true},
    {"Apple's pad on USB, in a port that the kernel does not know",
     {.name = "bcm5974", .isTouchpad = true, .integration = "internal", .bus = BUS_USB, .vendor = 0x05ac},
     true},
    {"Wacom's pad in a fixed port, which udev calls external",
     {.name = "Wacom Touch Pad",
      .isTouchpad = true,
      .integration = "external",
      .bus = BUS_USB,
      .vendor = 0x056a,
      .port = UsbPort::fixed},
     true},
    {"Magic Trackpad by Bluetooth",
     {.name = "Apple Magic Trackpad",
      .isTouchpad = true,
      .integration = "external",
      .bus = BUS_BLUETOOTH,
      .vendor = 0x05ac},
     false},
    {"Magic Trackpad by Bluetooth without a property of udev",
     {.name = "Apple Magic Trackpad", .isTouchpad = true, .bus = BUS_BLUETOOTH, .vendor = 0x004c},
     false},
    {"Magic Trackpad by Bluetooth, whose adapter is built in",
     {.name = "Apple Magic Trackpad",
      .isTouchpad = true,
      .bus = BUS_BLUETOOTH,
      .vendor = 0x05ac,
      .port = UsbPort::fixed},
     false},
    {"Magic Trackpad by USB",
     {.name = "Apple Inc. Magic Trackpad",
      .isTouchpad = true,
      .integration = "external",
      .bus = BUS_USB,
      .vendor = 0x05ac},
     false},
    {"Magic Trackpad by USB, in a removable port",
     {.name = "Apple Inc. Magic Trackpad",
      .isTouchpad = true,
      .integration = "external",
      .bus = BUS_USB,
      .vendor = 0x05ac,
      .port = UsbPort::removable},
     false},
    {"Logitech T650 behind its receiver",
     {.name = "Logitech Rechargeable Touchpad T650",
      .isTouchpad = true,
      .integration = "external",
      .bus = BUS_USB,
      .vendor = 0x046d},
     false},
    {"Logitech T650 without a property of udev",
     {.name = "Logitech Rechargeable Touchpad T650", .isTouchpad = true, .bus = BUS_USB, .vendor = 0x046d},
     false},
    {"Wacom Bamboo without a property of udev",
     {.name = "Wacom Bamboo 2FG 4x5 Finger", .isTouchpad = true, .bus = BUS_USB, .vendor = 0x056a},
     false},
    {"Wacom's pad on I2C, which udev calls internal",
     {.name = "WCOM4934:00 056A:4934 Touchpad",
      .isTouchpad = true,
      .integration = "internal",
      .bus = BUS_I2C,
      .vendor = 0x056a},
     true},
    {"a keyboard cover's pad, which udev calls external",
     {.name = "ALPS HP Elite x2 Touchpad",
      .isTouchpad = true,
      .integration = "external",
      .bus = BUS_USB,
      .vendor = 0x044e},
     false},
    {"an unknown pad by USB that udev calls internal, in a removable port",
     {.name = "HTX HID Device Touchpad",
      .isTouchpad = true,
      .integration = "internal",
      .bus = BUS_USB,
      .vendor = 0x1a86,
      .port = UsbPort::removable},
     false},
    {"a pad with an integration that this program does not know",
     {.name = "SYNA8004:00 06CB:CD8B Touchpad", .isTouchpad = true, .integration = "both", .bus = BUS_I2C},
     true},
    {"a pad of another seat",
     {.name = "SynPS/2 Synaptics TouchPad",
      .isTouchpad = true,
      .integration = "internal",
      .bus = BUS_I8042,
      .seat = "seat1"},
     false},
    {"a virtual touchpad",
     {.name = "Remote touchpad", .isTouchpad = true, .bus = BUS_VIRTUAL, .isVirtual = true},
     false},
    {"a virtual touchpad that udev calls internal",
     {.name = "Remote touchpad", .isTouchpad = true, .integration = "internal", .bus = BUS_I8042, .isVirtual = true},
     false},
    {"ThinkPad's trackpoint",
     {.name = "TPPS/2 IBM TrackPoint", .isMouse = true, .isPointingStick = true, .bus = BUS_I8042},
     false},
    {"a mouse on PS/2", {.name = "PS/2 Generic Mouse", .isMouse = true, .bus = BUS_I8042}, false},
    {"a mouse on USB in a fixed port",
     {.name = "Logitech USB Optical Mouse", .isMouse = true, .bus = BUS_USB, .port = UsbPort::fixed},
     false},
    {"a touch screen on I2C", {.name = "ELAN2514:00 04F3:2AF1", .bus = BUS_I2C, .vendor = 0x04f3}, false},
    {"a tablet", {.name = "Wacom Intuos Pro M Pen", .bus = BUS_USB, .vendor = 0x056a}, false},
};

class PadRulesKnownDevicesTest : public testing::TestWithParam<Known> {};

TEST_P(PadRulesKnownDevicesTest, AreBuiltInPadsOrNot) {
    EXPECT_EQ(isBuiltInPad(GetParam().device), GetParam().isBuiltIn);
}

INSTANTIATE_TEST_SUITE_P(All, PadRulesKnownDevicesTest, testing::ValuesIn(knownDevices));

using Inputs = std::vector<std::string>;

const InputProperties pad{.input = "input5",
                          .name = "SYNA8004:00 06CB:CD8B Touchpad",
                          .isTouchpad = true,
                          .bus = BUS_I2C,
                          .vendor = 0x06cb,
                          .hid = "0018:06CB:CD8B.0001"};
const InputProperties twin{.input = "input4",
                           .name = "SYNA8004:00 06CB:CD8B Mouse",
                           .isMouse = true,
                           .bus = BUS_I2C,
                           .vendor = 0x06cb,
                           .hid = "0018:06CB:CD8B.0001"};

TEST(PadRulesTest, MuteThePadAndItsTwinInAnyOrderOnAnyBus) {
    EXPECT_EQ(inputsToMute({pad, twin}), (Inputs{"input4", "input5"}));
    InputProperties usbPad = pad, usbTwin = twin;
    usbPad.bus = usbTwin.bus = BUS_USB;
    EXPECT_EQ(inputsToMute({usbTwin, usbPad}), (Inputs{"input4", "input5"}));
}

TEST(PadRulesTest, LeaveAMouseAloneThatOnlySharesNameAndVendor) {
    InputProperties other = twin;
    other.hid = "0018:06CB:CD8B.0002";
    EXPECT_EQ(inputsToMute({pad, other}), Inputs{"input5"});
    EXPECT_EQ(inputsToMute({twin}), Inputs{});
}

struct Mouse {
    const char* what;
    std::uint16_t bus;
    bool isTagged;
    bool hasStickProperty;
    bool hasMiddleButton;
    bool isTwin;
};

TEST(PadRulesTest, LeaveAPointingStickOfThePadsDeviceAlone) {
    for (const Mouse& mouse : {
             Mouse{"a twin on I2C that udev tags as a stick", BUS_I2C, true, false, false, true},
             Mouse{"a stick on I2C with a middle button", BUS_I2C, true, false, true, false},
             Mouse{"a stick on I2C whose driver reports it", BUS_I2C, true, true, false, false},
             Mouse{"a twin on I2C with a middle button that udev does not tag", BUS_I2C, false, false, true, true},
             Mouse{"a twin on USB", BUS_USB, false, false, false, true},
             Mouse{"a stick on USB", BUS_USB, true, false, false, false},
             Mouse{"a stick on USB whose driver reports it", BUS_USB, true, true, true, false},
         }) {
        InputProperties own = pad;
        own.bus = mouse.bus;
        InputProperties other = twin;
        other.bus = mouse.bus;
        other.isPointingStick = mouse.isTagged;
        other.hasStickProperty = mouse.hasStickProperty;
        other.hasMiddleButton = mouse.hasMiddleButton;
        const Inputs both{"input4", "input5"};
        EXPECT_EQ(inputsToMute({own, other}), mouse.isTwin ? both : Inputs{"input5"}) << mouse.what;
    }
}

TEST(PadRulesTest, LeaveOtherPartsOfThePadsDeviceAlone) {
    InputProperties keys = twin;
    keys.isMouse = false;
    InputProperties named = twin;
    named.name = "SYNA8004:00 06CB:CD8B TrackPoint";
    EXPECT_EQ(inputsToMute({pad, keys, named}), Inputs{"input5"});
}

TEST(PadRulesTest, LeaveTheTwinOfAnExternalPadAlone) {
    InputProperties external = pad;
    external.bus = BUS_BLUETOOTH;
    EXPECT_EQ(inputsToMute({external, twin}), Inputs{});
}

TEST(PadRulesTest, AssignNoTwinToAPadThatIsNoHidDevice) {
    InputProperties wired = pad;
    wired.hid = "";
    InputProperties mouse = twin;
    mouse.hid = "";
    EXPECT_EQ(inputsToMute({wired, mouse}), Inputs{"input5"});
}

TEST(PadRulesTest, MuteEveryBuiltInPad) {
    InputProperties second = pad;
    second.input = "input6";
    second.hid = "";
    EXPECT_EQ(inputsToMute({pad, second}), (Inputs{"input5", "input6"}));
}

}  // namespace
}  // namespace kovra::helper
