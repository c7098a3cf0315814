#include "BLE_kovra/platform/linux/control/Pads.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/helper/pads/MockInputs.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::control {
namespace {

using helper::MockInput;

// A laptop, as sysfs and udev describe it, and the service's records.
class PadsTest : public testing::Test {
  protected:
    std::vector<Pad> read() {
        std::vector<Pad> pads;
        std::string error;
        readPads(pads, error, places_);
        EXPECT_EQ(error, "");
        return pads;
    }
    std::string summary() {
        std::string text;
        for (const Pad& pad : read()) {
            text += pad.input + (pad.kind == Pad::Kind::builtIn ? " built in" : "") +
                    (pad.kind == Pad::Kind::twin ? " twin" : "") + (pad.kind == Pad::Kind::other ? " other" : "") +
                    (pad.isMuted == true ? " muted; " : "; ");
        }
        return text;
    }

    helper::MockInputs inputs_;
    const TempFolder records_;
    PadPlaces places_{.records = records_.path()};
};

TEST_F(PadsTest, AreTheTrackpadsAndTheirTwinsBuiltInOnesFirst) {
    EXPECT_EQ(summary(), "");
    inputs_.addDevice({.input = "input3", .name = "Magic Trackpad", .bus = "0005", .vendor = "05ac"});
    inputs_.addDevice(helper::twin);
    inputs_.addDevice(helper::pad);
    inputs_.addDevice({.input = "input9", .name = "A Mouse", .properties = "ID_INPUT=1\nID_INPUT_MOUSE=1\n"});
    EXPECT_EQ(summary(), "input5 built in; input4 twin; input3 other; ");
    inputs_.inhibit("input5", "1");
    EXPECT_EQ(summary(), "input5 built in muted; input4 twin; input3 other; ");
    EXPECT_EQ(read()[0].name, "SYNA8004:00 06CB:CD8B Touchpad");
}

TEST_F(PadsTest, OfOneKindKeepTheirOrder) {
    for (int number = 50; number > 10; --number)
        inputs_.addDevice({.input = "input" + std::to_string(number), .bus = "0005"});
    EXPECT_EQ(read().size(), 40U);
    EXPECT_TRUE(std::ranges::is_sorted(read(), {}, &Pad::input));
}

TEST_F(PadsTest, HaveAReasonIfTheirStateCannotBeRead) {
    inputs_.addDevice(helper::pad);
    inputs_.inhibit("input5", "x");
    EXPECT_EQ(read()[0].error, "the kernel's value is neither 0 nor 1");
    inputs_.removeAttribute("input5");
    EXPECT_EQ(read()[0].error, "No such file or directory");
    EXPECT_FALSE(read()[0].isMuted.has_value());
}

TEST_F(PadsTest, AreRecordedByTheService) {
    inputs_.addDevice(helper::pad);
    EXPECT_EQ(read()[0].isRecorded, false);
    writeFile(records_ / "input5", "");
    const Pad recorded = read()[0];
    EXPECT_EQ(recorded.isRecorded, true);
    struct stat status{};
    ASSERT_EQ(::stat((records_ / "input5").c_str(), &status), 0);
    ASSERT_TRUE(recorded.recordedSince.has_value());
    EXPECT_EQ(recorded.recordedSince->seconds, status.st_mtim.tv_sec);
}

TEST_F(PadsTest, CanBeMutedByTheServiceIfItsGroupMayWriteTheAttribute) {
    inputs_.addDevice(helper::pad);
    places_.group = "no such group";
    EXPECT_FALSE(read()[0].mayServiceMute.has_value());
    places_.group = ::getgrgid(::getegid())->gr_name;  // the group of the new file
    const auto attribute = "/sys/class/input/input5/inhibited";
    ASSERT_EQ(::chmod(attribute, 0664), 0);
    EXPECT_EQ(read()[0].mayServiceMute, true);
    ASSERT_EQ(::chmod(attribute, 0644), 0);
    EXPECT_EQ(read()[0].mayServiceMute, false);
}

TEST_F(PadsTest, ComeWithWhatHasDecidedAndNothingElse) {
    inputs_.addDevice({.input = "input6",
                       .properties = "ID_INPUT=1\nID_INPUT_TOUCHPAD=1\nID_INPUT_TOUCHPAD_INTEGRATION=external\n"
                                     "ID_SERIAL=SECRET\nID_SERIAL_SHORT=SECRET\nUNIQ=\"SECRET\"\n"});
    const Pad pad = read()[0];
    EXPECT_EQ(pad.kind, Pad::Kind::other);
    std::string text;
    for (const auto& [name, value] : pad.properties) text += name + "=" + value + "; ";
    EXPECT_EQ(text,
              "ID_INPUT_TOUCHPAD=1; ID_INPUT_MOUSE=0; ID_INPUT_POINTINGSTICK=0; "
              "ID_INPUT_TOUCHPAD_INTEGRATION=external; ID_SEAT=seat0; bus=0018; vendor=06cb; product=; "
              "USB port=unknown; virtual=no; ");
}

}  // namespace
}  // namespace kovra::control
