#include "BLE_kovra/platform/linux/XdgLoginService.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/Environment.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

struct XdgLogin : testing::Test {
    XdgLogin() {
        environment.set("XDG_CONFIG_HOME", folder / "own");
        environment.set("XDG_CONFIG_DIRS", folder / "first:" + (folder / "second"));
        environment.set("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
        environment.set("PATH", folder / "bin");
        const std::string program = folder / "bin/there";
        write(program, "");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    }

    void write(const std::filesystem::path& path, const std::string& text) const {
        std::filesystem::create_directories(path.parent_path());
        writeFile(path, text);
    }
    std::string entryIn(const std::string& base) const {
        return folder / base + "/autostart/org.ble_kovra.BLEKovra.desktop";
    }
    void enter(const std::string& lines, const std::string& base = "own") const {
        write(entryIn(base), "[Desktop Entry]\nType=Application\nName=BLE-kovra\n" + lines);
    }

    TempFolder folder;
    Environment environment;
    XdgLoginService login;
};

TEST_F(XdgLogin, IsNotRegisteredWithoutAnEntry) { EXPECT_EQ(login.status(), LoginStatus::notRegistered); }

TEST_F(XdgLogin, IsEnabledByAnEntryWhoseProgramIsThere) {
    enter("Exec=there\n");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
    enter("Exec=\"" + (folder / "bin/there") + "\" %U\n");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
}

TEST_F(XdgLogin, IsReadAfreshEachTime) {
    enter("Exec=there\n");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
    std::filesystem::remove(entryIn("own"));
    EXPECT_EQ(login.status(), LoginStatus::notRegistered);
}

TEST_F(XdgLogin, IsNotRegisteredWhereTheDesktopsSettingsSwitchedItOff) {
    enter("Exec=there\nHidden=true\n");
    EXPECT_EQ(login.status(), LoginStatus::notRegistered);
    enter("Exec=there\nX-GNOME-Autostart-enabled=false\n");
    EXPECT_EQ(login.status(), LoginStatus::notRegistered);
    enter("Exec=there\nHidden=false\nX-GNOME-Autostart-enabled=true\n");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
}

TEST_F(XdgLogin, NeedsApprovalWhereTheEntryIsForOtherDesktops) {
    enter("Exec=there\nOnlyShowIn=KDE;XFCE;\n");
    EXPECT_EQ(login.status(), LoginStatus::requiresApproval);
    enter("Exec=there\nNotShowIn=GNOME;\n");
    EXPECT_EQ(login.status(), LoginStatus::requiresApproval);
    enter("Exec=there\nOnlyShowIn=\n");
    EXPECT_EQ(login.status(), LoginStatus::requiresApproval);
    enter("Exec=there\nOnlyShowIn=KDE;GNOME;\nNotShowIn=XFCE;\n");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
}

TEST_F(XdgLogin, IsNotFoundWhereTheProgramHasGone) {
    for (const char* lines :
         {"Exec=gone\n", "Exec=/nowhere/ble-kovra\n", "Exec=there\nTryExec=gone\n", "", "Exec=\n"}) {
        enter(lines);
        EXPECT_EQ(login.status(), LoginStatus::notFound) << lines;
    }
    enter("Exec=there\nTryExec=there\n");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
}

TEST_F(XdgLogin, TakesTheUsersEntryBeforeTheSystemsAndTheFirstOfThese) {
    enter("Exec=there\n", "second");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
    enter("Exec=there\nHidden=true\n", "first");
    EXPECT_EQ(login.status(), LoginStatus::notRegistered);
    enter("Exec=there\n");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
}

TEST_F(XdgLogin, IsNotFoundWhereTheEntryCannotBeRead) {
    std::filesystem::create_directories(entryIn("own"));
    enter("Exec=there\n", "first");
    EXPECT_EQ(login.status(), LoginStatus::notFound);
}

TEST_F(XdgLogin, PassesOverFoldersThatAreFiles) {
    write(folder / "own", "");
    enter("Exec=there\n", "first");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
}

TEST_F(XdgLogin, LooksInTheStandardPlacesWhereNothingIsSet) {
    environment.unset({"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS"});
    environment.set("HOME", folder.path().string());
    write(folder / ".config/autostart/org.ble_kovra.BLEKovra.desktop", "[Desktop Entry]\nExec=there\n");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
}

}  // namespace
}  // namespace kovra
