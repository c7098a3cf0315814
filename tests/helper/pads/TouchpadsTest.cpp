#include "helper/pads/Touchpads.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/helper/RunUntil.h"
#include "tests/helper/pads/MockInputs.h"
#include "tests/support/linux/FailingCalls.h"
#include "tests/support/posix/InAChild.h"

namespace kovra::helper {
namespace {

using Inputs = std::vector<std::string>;

// Adds the property that udev sets for pointing sticks, and for every mouse on I2C.
MockInput tagged(MockInput mouse) {
    mouse.properties += "ID_INPUT_POINTINGSTICK=1\n";
    return mouse;
}

class TouchpadsTest : public testing::Test {
  protected:
    Inputs present() { return Touchpads(loop).inputs(); }

    MockInputs computer;
    Loop loop;
};

TEST_F(TouchpadsTest, AreFoundAtTheStartWithTheirTwins) {
    computer.addDevice(pad);
    computer.addDevice(twin);
    EXPECT_EQ(present(), (Inputs{"input4", "input5"}));
}

TEST_F(TouchpadsTest, AreNoneOnAComputerWithoutTouchpads) {
    computer.addDevice({.input = "input1", .name = "Power Button", .properties = "ID_INPUT=1\nID_INPUT_KEY=1\n"});
    EXPECT_EQ(present(), Inputs());
}

TEST_F(TouchpadsTest, AreReportedWhenTheyAppearAndDisappear) {
    Touchpads touchpads(loop);
    int changes = 0;
    touchpads.onChange = [&] { ++changes; };
    computer.plug(pad);
    EXPECT_TRUE(runUntil(loop, [&] { return touchpads.inputs() == Inputs{"input5"}; }));
    computer.plug(twin);
    EXPECT_TRUE(runUntil(loop, [&] { return touchpads.inputs() == (Inputs{"input4", "input5"}); }));
    computer.unplug("input5");
    EXPECT_TRUE(runUntil(loop, [&] { return touchpads.inputs().empty(); }));
    handleEvents(loop);
    EXPECT_EQ(changes, 3);
}

TEST_F(TouchpadsTest, AreListedAgainIfTheyCannotBeListed) {
    namespace fs = std::filesystem;
    computer.addDevice(pad);
    const fs::path list = fs::path(std::getenv("UMOCKDEV_DIR")) / "sys/class/input";
    const fs::path away = list.string() + ".away";
    fs::rename(list, away);
    fs::create_symlink("input", list);  // a loop
    Touchpads touchpads(loop);
    int changes = 0;
    touchpads.onChange = [&] { ++changes; };
    EXPECT_EQ(touchpads.inputs(), Inputs());
    fs::remove(list);
    fs::rename(away, list);
    EXPECT_TRUE(runUntil(loop, [&] { return changes == 1; }));
    EXPECT_EQ(touchpads.inputs(), Inputs{"input5"});
    handleEvents(loop);
    EXPECT_EQ(changes, 1);
}

TEST_F(TouchpadsTest, AreFoundUnderTheirNewNumber) {
    computer.addDevice(pad);
    Touchpads touchpads(loop);
    computer.unplug("input5");
    MockInput again = pad;
    again.input = "input9";
    computer.plug(again);
    EXPECT_TRUE(runUntil(loop, [&] { return touchpads.inputs() == Inputs{"input9"}; }));
}

TEST_F(TouchpadsTest, AreNotReportedAgainWhenOtherDevicesChange) {
    computer.addDevice(pad);
    Touchpads touchpads(loop);
    int changes = 0;
    touchpads.onChange = [&] { ++changes; };
    computer.plug({.input = "input7",
                   .name = "Logitech USB Optical Mouse",
                   .properties = "ID_INPUT=1\nID_INPUT_MOUSE=1\n",
                   .bus = "0003",
                   .hid = "0003:046D:C077.0002"});
    computer.unplug("input7");
    computer.sendEvent("input5", "change");
    handleEvents(loop);
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(touchpads.inputs(), Inputs{"input5"});
    computer.plug(twin);
    EXPECT_TRUE(runUntil(loop, [&] { return touchpads.inputs() == (Inputs{"input4", "input5"}); }));
    EXPECT_EQ(changes, 1);
}

TEST_F(TouchpadsTest, WithoutAnEventAreFoundByARescan) {
    Touchpads touchpads(loop);
    int changes = 0;
    touchpads.onChange = [&] { ++changes; };
    computer.addDevice(pad);
    handleEvents(loop);
    EXPECT_EQ(touchpads.inputs(), Inputs());
    touchpads.rescan();
    EXPECT_EQ(touchpads.inputs(), Inputs{"input5"});
    EXPECT_EQ(changes, 1);
}

TEST_F(TouchpadsTest, AreFoundAfterEventsWereLost) {
    EXPECT_TRUE(holdsInAChild([this] {
        Loop own;
        const Touchpads touchpads(own);
        computer.addDevice(pad);
        computer.sendEventOfDevice("input5", "change");
        failAt(SYS_recvmsg, {ENOBUFS});
        handleEvents(own);
        return touchpads.inputs() == Inputs{"input5"};
    }));
}

TEST_F(TouchpadsTest, InARemovablePortAreExternal) {
    const std::string built = computer.plugUsb("/devices/pci0000:00/usb1", "1-5", "fixed");
    const std::string free = computer.plugUsb("/devices/pci0000:00/usb1", "1-6", "removable");
    computer.addDevice({.input = "input5", .name = "bcm5974", .bus = "0003", .parent = built});
    computer.addDevice({.input = "input6", .name = "bcm5974", .bus = "0003", .parent = free});
    EXPECT_EQ(present(), Inputs{"input5"});
}

TEST_F(TouchpadsTest, BehindARemovableHubAreExternal) {
    const std::string hub = computer.plugUsb("/devices/pci0000:00/usb1", "1-6", "removable");
    const std::string inside = computer.plugUsb(hub, "1-6.1", "fixed");
    computer.addDevice({.input = "input5", .name = "Keyboard with a pad", .bus = "0003", .parent = inside});
    EXPECT_EQ(present(), Inputs());
}

TEST_F(TouchpadsTest, ByBluetoothAreExternalEvenIfTheAdapterIsBuiltIn) {
    const std::string adapter = computer.plugUsb("/devices/pci0000:00/usb1", "1-7", "fixed");
    computer.addDevice(
        {.input = "input5", .name = "Apple Magic Trackpad", .bus = "0005", .vendor = "05ac", .parent = adapter});
    EXPECT_EQ(present(), Inputs());
}

TEST_F(TouchpadsTest, ThatUdevCallsExternalAreLeftAlone) {
    MockInput external = pad;
    external.properties += "ID_INPUT_TOUCHPAD_INTEGRATION=external\n";
    computer.addDevice(external);
    computer.addDevice(twin);
    EXPECT_EQ(present(), Inputs());
}

TEST_F(TouchpadsTest, OfAMakerOfExternalPadsAreLeftAlone) {
    computer.addDevice({.name = "Logitech Rechargeable Touchpad T650", .bus = "0003", .vendor = "046d"});
    EXPECT_EQ(present(), Inputs());
}

TEST_F(TouchpadsTest, ThatAreVirtualAreLeftAlone) {
    computer.addDevice({.input = "input5", .name = "Remote touchpad", .bus = "0006", .parent = "/devices/virtual"});
    EXPECT_EQ(present(), Inputs());
}

TEST_F(TouchpadsTest, OfAnotherSeatAreLeftAlone) {
    MockInput other = pad;
    other.properties += "ID_SEAT=seat1\n";
    computer.addDevice(other);
    EXPECT_EQ(present(), Inputs());
}

TEST_F(TouchpadsTest, DoNotIncludeThePointingStickOfTheirDevice) {
    MockInput onUsb = pad;
    onUsb.bus = "0003";
    MockInput stick = tagged(twin);
    stick.bus = "0003";
    computer.addDevice(onUsb);
    computer.addDevice(stick);
    EXPECT_EQ(present(), Inputs{"input5"});
}

TEST_F(TouchpadsTest, HaveATwinOnI2CAlthoughUdevTagsItAsAPointingStick) {
    computer.addDevice(pad);
    computer.addDevice(tagged(twin));
    EXPECT_EQ(present(), (Inputs{"input4", "input5"}));
}

TEST_F(TouchpadsTest, DoNotIncludeAStickOnI2CThatHasAMiddleButton) {
    MockInput stick = tagged(twin);
    stick.keys = "70000 0 0 0 0";
    computer.addDevice(pad);
    computer.addDevice(stick);
    EXPECT_EQ(present(), Inputs{"input5"});
}

TEST_F(TouchpadsTest, HaveATwinWhoseOtherKeysAreNoMiddleButton) {
    MockInput mouse = tagged(twin);
    mouse.keys = "40000 30000 0 0 0 40000";
    computer.addDevice(pad);
    computer.addDevice(mouse);
    EXPECT_EQ(present(), (Inputs{"input4", "input5"}));
}

TEST_F(TouchpadsTest, DoNotIncludeAStickOnI2CThatItsDriverReports) {
    MockInput stick = tagged(twin);
    stick.driverProperties = "21";
    computer.addDevice(pad);
    computer.addDevice(stick);
    EXPECT_EQ(present(), Inputs{"input5"});
}

}  // namespace
}  // namespace kovra::helper
