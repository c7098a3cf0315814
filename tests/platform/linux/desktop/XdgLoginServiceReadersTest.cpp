#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "BLE_kovra/platform/linux/desktop/XdgLoginService.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/posix/PosixProcessRunner.h"
#include "tests/support/Environment.h"
#include "tests/support/posix/Scripts.h"

namespace kovra {
namespace {

// Tests that other programs can read the autostart entry. systemd starts the program from it on some desktops.
// desktop-file-validate checks it.
class XdgLoginServiceReadersTest : public testing::Test {
  protected:
    static constexpr const char* generator = "/usr/lib/systemd/user-generators/systemd-xdg-autostart-generator";
    static constexpr const char* validator = "/usr/bin/desktop-file-validate";

    XdgLoginServiceReadersTest() {
        environment_.set("XDG_CONFIG_HOME", scripts_ / "own");
        environment_.set("XDG_CONFIG_DIRS", scripts_ / "system");
        environment_.set("XDG_CURRENT_DESKTOP", "KDE");
    }

    // Returns the command that systemd would start at login, or an empty text if it would start none.
    std::string startedBySystemd() {
        std::filesystem::remove_all(scripts_ / "units");
        std::filesystem::create_directory(scripts_ / "units");
        const std::string units = scripts_ / "units";
        EXPECT_TRUE(processes_.output({generator, {units, units, units}}));
        std::ifstream unit(units + "/app-org.ble_kovra.BLEKovra@autostart.service");
        for (std::string line; std::getline(unit, line);) {
            if (line.starts_with("ExecStart=")) return line.substr(line.find('=') + 1);
        }
        return "";
    }
    std::string complaints() { return processes_.output({validator, {entry_}}).value_or("it could not be started"); }

    Scripts scripts_;
    Environment environment_;
    SdEventLoop loop_;
    PosixProcessRunner processes_{loop_};
    const std::string entry_ = scripts_ / "own/autostart/org.ble_kovra.BLEKovra.desktop";
};

TEST_F(XdgLoginServiceReadersTest, AgreeWithEveryStatus) {
    const std::string program = scripts_.make("");
    XdgLoginService login(program);
    EXPECT_EQ(startedBySystemd(), "");
    EXPECT_TRUE(login.registerApplication());
    EXPECT_NE(startedBySystemd().find(program), std::string::npos) << startedBySystemd();
    EXPECT_EQ(complaints(), "");
    EXPECT_TRUE(login.unregisterApplication());
    EXPECT_EQ(startedBySystemd(), "");

    std::filesystem::create_directories(scripts_ / "system/autostart");
    writeFile(scripts_ / "system/autostart/org.ble_kovra.BLEKovra.desktop",
              "[Desktop Entry]\nType=Application\nName=x\nExec=/bin/true\n");
    EXPECT_NE(startedBySystemd().find("/bin/true"), std::string::npos);
    EXPECT_TRUE(login.unregisterApplication());
    EXPECT_EQ(startedBySystemd(), "");
    EXPECT_EQ(complaints(), "");
    EXPECT_TRUE(login.registerApplication());
    EXPECT_NE(startedBySystemd().find(program), std::string::npos);
    EXPECT_EQ(complaints(), "");
}

TEST_F(XdgLoginServiceReadersTest, FindTheProgramWhateverItsPath) {
    // systemd (252) does not find a program whose path contains a percent sign or a backslash.
    for (const char* name : {"with blanks", "dollar $HOME", "quotes\"and`ticks", "д&;#'"}) {
        XdgLoginService login(scripts_.make(": >$here/started", name));
        EXPECT_TRUE(login.registerApplication());
        EXPECT_EQ(login.status(), LoginStatus::enabled);
        EXPECT_EQ(complaints(), "") << name;
        EXPECT_NE(startedBySystemd(), "") << name;
    }
}

}  // namespace
}  // namespace kovra
