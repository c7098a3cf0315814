#include "BLE_kovra/platform/linux/desktop/XdgLoginService.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/Environment.h"
#include "tests/support/posix/FileSizeLimit.h"
#include "tests/support/posix/OrdinaryUser.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

struct XdgLoginServiceTest : testing::Test {
    XdgLoginServiceTest() {
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

    std::string entry(const std::string& base = "own") const { return readFile(entryIn(base)); }
    static std::string reasonOf(int error) { return std::strerror(error); }

    TempFolder folder;
    Environment environment;
    XdgLoginService login{folder / "bin/there"};
    const std::string exec = "Exec=" + (folder / "bin/there") + "\n";
};

TEST_F(XdgLoginServiceTest, IsNotRegisteredWithoutAnEntry) { EXPECT_EQ(login.status(), LoginStatus::notRegistered); }

TEST_F(XdgLoginServiceTest, NamesEachFileOnWhichTheStatusDepends) {
    environment.set("PATH", folder / "missing:" + (folder / "bin"));
    enter("Exec=there\nTryExec=/nowhere/tool\n", "second");
    std::vector<std::string> visited;
    EXPECT_EQ(login.read([&](const std::string& path) { visited.push_back(path); }), LoginStatus::notFound);
    const std::vector<std::string> expected = {entryIn("own"),           entryIn("first"),     entryIn("second"),
                                               folder / "missing/there", folder / "bin/there", "/nowhere/tool"};
    EXPECT_EQ(visited, expected);
}

struct Entry {
    const char* name;
    const char* lines;  // $BIN stands for the folder of the programs
    LoginStatus status;
};
void PrintTo(const Entry& entry, std::ostream* out) { *out << entry.lines; }

struct XdgLoginServiceStatusTest : XdgLoginServiceTest, testing::WithParamInterface<Entry> {};

TEST_P(XdgLoginServiceStatusTest, FollowsFromTheEntry) {
    std::string lines = GetParam().lines;
    if (const auto bin = lines.find("$BIN"); bin != std::string::npos) lines.replace(bin, 4, folder / "bin");
    enter(lines);
    EXPECT_EQ(login.status(), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(
    , XdgLoginServiceStatusTest,
    testing::Values(Entry{"EnabledByNameInThePath", "Exec=there\n", LoginStatus::enabled},
                    Entry{"EnabledByQuotedPathWithArguments", "Exec=\"$BIN/there\" %U\n", LoginStatus::enabled},
                    Entry{"EnabledIfTryExecExists", "Exec=there\nTryExec=there\n", LoginStatus::enabled},
                    Entry{"EnabledIfBothSwitchesAreOn", "Exec=there\nHidden=false\nX-GNOME-Autostart-enabled=true\n",
                          LoginStatus::enabled},
                    Entry{"EnabledIfThisDesktopIsListed", "Exec=there\nOnlyShowIn=KDE;GNOME;\nNotShowIn=XFCE;\n",
                          LoginStatus::enabled},
                    Entry{"NotRegisteredIfHidden", "Exec=there\nHidden=true\n", LoginStatus::notRegistered},
                    Entry{"NotRegisteredIfGnomeDisabledIt", "Exec=there\nX-GNOME-Autostart-enabled=false\n",
                          LoginStatus::notRegistered},
                    Entry{"RequiresApprovalIfForOtherDesktops", "Exec=there\nOnlyShowIn=KDE;XFCE;\n",
                          LoginStatus::requiresApproval},
                    Entry{"RequiresApprovalIfNotForThisDesktop", "Exec=there\nNotShowIn=GNOME;\n",
                          LoginStatus::requiresApproval},
                    Entry{"RequiresApprovalIfForNoDesktop", "Exec=there\nOnlyShowIn=\n", LoginStatus::requiresApproval},
                    Entry{"NotFoundIfTheNameIsNotInThePath", "Exec=gone\n", LoginStatus::notFound},
                    Entry{"NotFoundIfThePathDoesNotExist", "Exec=/nowhere/ble-kovra\n", LoginStatus::notFound},
                    Entry{"NotFoundIfTryExecDoesNotExist", "Exec=there\nTryExec=gone\n", LoginStatus::notFound},
                    Entry{"NotFoundWithoutExec", "", LoginStatus::notFound},
                    Entry{"NotFoundWithAnEmptyExec", "Exec=\n", LoginStatus::notFound}),
    [](const auto& row) { return row.param.name; });

TEST_F(XdgLoginServiceTest, IsReadAgainEachTime) {
    enter("Exec=there\n");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
    std::filesystem::remove(entryIn("own"));
    EXPECT_EQ(login.status(), LoginStatus::notRegistered);
}

TEST_F(XdgLoginServiceTest, PrefersTheUsersEntryAndThenTheFirstOfTheSystem) {
    enter("Exec=there\n", "second");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
    enter("Exec=there\nHidden=true\n", "first");
    EXPECT_EQ(login.status(), LoginStatus::notRegistered);
    enter("Exec=there\n");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
}

TEST_F(XdgLoginServiceTest, IsNotFoundIfTheEntryCannotBeRead) {
    std::filesystem::create_directories(entryIn("own"));
    enter("Exec=there\n", "first");
    EXPECT_EQ(login.status(), LoginStatus::notFound);
}

TEST_F(XdgLoginServiceTest, SkipsFoldersThatAreFiles) {
    write(folder / "own", "");
    enter("Exec=there\n", "first");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
}

TEST_F(XdgLoginServiceTest, LooksInTheStandardFoldersIfNothingIsSet) {
    environment.unset({"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS"});
    environment.set("HOME", folder.path().string());
    write(folder / ".config/autostart/org.ble_kovra.BLEKovra.desktop", "[Desktop Entry]\nExec=there\n");
    EXPECT_EQ(login.status(), LoginStatus::enabled);
}

TEST_F(XdgLoginServiceTest, RegistersWithAnEntryThatNamesTheRunningProgram) {
    EXPECT_TRUE(login.registerApplication());
    EXPECT_EQ(entry(), "[Desktop Entry]\nType=Application\nName=BLE-kovra\n" + exec +
                           "Icon=ble-kovra\nX-GNOME-Autostart-enabled=true\n");
    EXPECT_EQ(folder.names("own"), std::set<std::string>{"autostart"});
    EXPECT_EQ(folder.names("own/autostart"), std::set<std::string>{XdgLoginService::entryName});
    EXPECT_TRUE(login.unregisterApplication());
    EXPECT_TRUE(folder.names("own/autostart").empty());
}

TEST_F(XdgLoginServiceTest, EnablesAnEntryThatTheDesktopsSettingsSwitchedOffAndKeepsTheRest) {
    const std::string rest = "Name[de]=Trackpad aus\nX-GNOME-Autostart-Delay=7\n# mine\n";
    for (const std::string off :
         {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n", "Hidden=true\nX-GNOME-Autostart-enabled=false\n"}) {
        enter(exec + rest + off);
        EXPECT_TRUE(login.registerApplication());
        EXPECT_EQ(login.status(), LoginStatus::enabled);
        EXPECT_EQ(entry(), "[Desktop Entry]\nType=Application\nName=BLE-kovra\n" + exec + rest +
                               "X-GNOME-Autostart-enabled=true\n");
    }
}

TEST_F(XdgLoginServiceTest, ReplacesThePathOfAProgramThatMoved) {
    enter("Exec=/nowhere/ble-kovra --once\nTryExec=/nowhere/ble-kovra\n");
    EXPECT_EQ(login.status(), LoginStatus::notFound);
    EXPECT_TRUE(login.registerApplication());
    EXPECT_EQ(login.status(), LoginStatus::enabled);
    EXPECT_EQ(entry(),
              "[Desktop Entry]\nType=Application\nName=BLE-kovra\n" + exec + "X-GNOME-Autostart-enabled=true\n");
}

TEST_F(XdgLoginServiceTest, KeepsTheArgumentsThatTheUserAdded) {
    const std::string line = "Exec=\"" + (folder / "bin/there") + "\" --of-the-user\n";
    enter(line + "Hidden=true\n");
    EXPECT_TRUE(login.registerApplication());
    EXPECT_NE(entry().find(line), std::string::npos);
}

TEST_F(XdgLoginServiceTest, EnablesAnEntryForOtherDesktopsOnThisOne) {
    for (const std::string excluded :
         {"OnlyShowIn=KDE;\n", "NotShowIn=GNOME;\n", "OnlyShowIn=GNOME;\nNotShowIn=ubuntu;\n"}) {
        enter(exec + excluded);
        EXPECT_EQ(login.status(), LoginStatus::requiresApproval);
        EXPECT_TRUE(login.registerApplication());
        EXPECT_EQ(login.status(), LoginStatus::enabled);
    }
    enter(exec + "OnlyShowIn=GNOME;\nHidden=true\n");
    EXPECT_TRUE(login.registerApplication());
    EXPECT_NE(entry().find("OnlyShowIn=GNOME;\n"), std::string::npos) << "it did not exclude this desktop";
}

TEST_F(XdgLoginServiceTest, ReplacesAFileThatIsNotAnEntry) {
    for (const std::string text : {"", "\n\n", "no entry", "Exec=there\n", "[Desktop Action New]\nExec=there\n"}) {
        write(entryIn("own"), text);
        EXPECT_TRUE(login.registerApplication());
        EXPECT_EQ(login.status(), LoginStatus::enabled);
        EXPECT_TRUE(entry().starts_with("[Desktop Entry]\n"));
    }
    write(entryIn("own"), "[Desktop Entry]\n");
    EXPECT_TRUE(login.registerApplication());
    EXPECT_EQ(entry(),
              "[Desktop Entry]\nType=Application\nName=BLE-kovra\n" + exec + "X-GNOME-Autostart-enabled=true\n");
}

TEST_F(XdgLoginServiceTest, HidesAnEntryOfTheSystemAndShowsItAgain) {
    enter("Exec=there\n", "second");
    const std::string system = entry("second");
    EXPECT_TRUE(login.unregisterApplication());
    EXPECT_EQ(login.status(), LoginStatus::notRegistered);
    EXPECT_NE(entry().find("Hidden=true\n"), std::string::npos);
    EXPECT_TRUE(login.registerApplication());
    EXPECT_EQ(login.status(), LoginStatus::enabled);
    EXPECT_EQ(entry().find("Hidden"), std::string::npos);
    EXPECT_TRUE(login.unregisterApplication());
    EXPECT_EQ(login.status(), LoginStatus::notRegistered);
    EXPECT_EQ(entry("second"), system);
}

TEST_F(XdgLoginServiceTest, UnregistersByHidingAnEntryThatTheUserEdited) {
    const std::string enabled = "X-GNOME-Autostart-enabled=true\n";
    for (const std::string& edited :
         {"Exec=there --of-the-user\n" + enabled, "Exec=\"" + (folder / "bin/there") + "\" %U\n",
          exec + "# mine\n" + enabled, exec + "X-GNOME-Autostart-Delay=7\n", exec + "Name=x\n", exec + "Hidden=false\n",
          exec + "\n[Desktop Action New]\nExec=there\n"}) {
        enter(edited);
        EXPECT_EQ(login.status(), LoginStatus::enabled) << edited;
        EXPECT_TRUE(login.unregisterApplication());
        EXPECT_EQ(login.status(), LoginStatus::notRegistered) << edited;
        EXPECT_TRUE(login.registerApplication());
        EXPECT_EQ(login.status(), LoginStatus::enabled) << edited;
    }
    enter("Exec=there --of-the-user\n# mine\n" + enabled);
    const std::string before = entry();
    EXPECT_TRUE(login.unregisterApplication());
    EXPECT_EQ(entry(), before + "Hidden=true\n");
}

TEST_F(XdgLoginServiceTest, UnregistersByRemovingAnEntryWithNothingButItsOwnLines) {
    for (const std::string& text : {exec, exec + "\nX-GNOME-Autostart-enabled=true\n", std::string("Exec=there\n"),
                                    std::string("Exec=\"/nowhere/of old/ble-kovra\"\nIcon=ble-kovra\n")}) {
        enter(text);
        EXPECT_TRUE(login.unregisterApplication());
        EXPECT_TRUE(folder.names("own/autostart").empty()) << text;
    }
}

TEST_F(XdgLoginServiceTest, DoesNotTouchTheTargetOfALink) {
    enter("Exec=gone\n", "elsewhere");
    const std::string target = entryIn("elsewhere"), before = entry("elsewhere");
    std::filesystem::create_directories(folder / "own/autostart");
    std::filesystem::create_symlink(target, entryIn("own"));
    EXPECT_TRUE(login.registerApplication());
    EXPECT_EQ(login.status(), LoginStatus::enabled);
    EXPECT_FALSE(std::filesystem::is_symlink(entryIn("own")));
    EXPECT_EQ(readFile(target), before);

    std::filesystem::remove(entryIn("own"));
    write(target, "[Desktop Entry]\nType=Application\nName=x\n" + exec);
    const std::string enabled = entry("elsewhere");
    std::filesystem::create_symlink(target, entryIn("own"));
    EXPECT_EQ(login.status(), LoginStatus::enabled);
    EXPECT_TRUE(login.unregisterApplication());
    EXPECT_EQ(login.status(), LoginStatus::notRegistered);
    EXPECT_EQ(readFile(target), enabled);
    EXPECT_FALSE(std::filesystem::is_symlink(entryIn("own")));

    std::filesystem::remove(entryIn("own"));
    std::filesystem::create_symlink(folder / "nothing", entryIn("own"));
    EXPECT_TRUE(login.registerApplication());
    EXPECT_EQ(login.status(), LoginStatus::enabled);
    EXPECT_FALSE(std::filesystem::exists(folder / "nothing"));
}

TEST_F(XdgLoginServiceTest, ChangesNothingInAFolderThatIsReadOnly) {
    enter("Exec=gone\n");
    const std::string before = entry();
    for (const char* path : {"", "own", "own/autostart"}) OrdinaryUser::give(folder / path);
    const OrdinaryUser user;
    const Rights readOnly(folder / "own/autostart", 0500);
    EXPECT_EQ(login.registerApplication().reason(), reasonOf(EACCES));
    EXPECT_EQ(login.unregisterApplication().reason(), reasonOf(EACCES));
    EXPECT_EQ(entry(), before);
    EXPECT_EQ(folder.names("own/autostart").size(), 1U);
}

TEST_F(XdgLoginServiceTest, ChangesNothingOnAFullDisk) {
    enter("Exec=gone\n");
    const std::string before = entry();
    std::string reason;
    {
        const FileSizeLimit limit(20);
        reason = login.registerApplication().reason();
    }
    EXPECT_EQ(reason, reasonOf(EFBIG));
    EXPECT_EQ(entry(), before);
    EXPECT_EQ(folder.names("own/autostart").size(), 1U);
}

TEST_F(XdgLoginServiceTest, ChangesNoEntryThatItCannotRead) {
    std::filesystem::create_directories(entryIn("own"));
    EXPECT_EQ(login.registerApplication().reason(), reasonOf(EISDIR));
    EXPECT_EQ(login.unregisterApplication().reason(), reasonOf(EISDIR));
    std::filesystem::remove(entryIn("own"));

    enter("Exec=gone\n");
    const Rights hidden(entryIn("own"), 0);
    for (const char* path : {"", "own", "own/autostart"}) OrdinaryUser::give(folder / path);
    const OrdinaryUser user;
    EXPECT_EQ(login.registerApplication().reason(), reasonOf(EACCES));
    EXPECT_EQ(login.unregisterApplication().reason(), reasonOf(EACCES));
    EXPECT_EQ(folder.names("own/autostart").size(), 1U);
}

TEST_F(XdgLoginServiceTest, NeedsAFolderForItsEntry) {
    write(folder / "own", "");
    EXPECT_EQ(login.registerApplication().reason(), reasonOf(ENOTDIR));
    EXPECT_TRUE(login.unregisterApplication());
    EXPECT_EQ(readFile(folder / "own"), "");
}

TEST_F(XdgLoginServiceTest, RefusesAProgramWhosePathIsNotText) {
    EXPECT_EQ(XdgLoginService("/\xFF/ble-kovra").registerApplication().reason(), reasonOf(EILSEQ));
    EXPECT_FALSE(std::filesystem::exists(folder / "own"));
}

TEST_F(XdgLoginServiceTest, ChangesNobodyElsesEntry) {
    for (const char* base : {"own", "first"}) {
        write(folder / base + "/autostart/org.example.Other.desktop", "[Desktop Entry]\nName=other\n");
        write(folder / base + "/autostart/ble-kovra.desktop", "[Desktop Entry]\nExec=ble-kovra\n");
    }
    EXPECT_TRUE(login.registerApplication());
    EXPECT_TRUE(login.unregisterApplication());
    for (const char* base : {"own/autostart", "first/autostart"}) {
        EXPECT_EQ(folder.names(base), (std::set<std::string>{"ble-kovra.desktop", "org.example.Other.desktop"}));
        EXPECT_EQ(readFile(folder / base + "/org.example.Other.desktop"), "[Desktop Entry]\nName=other\n");
    }
}

}  // namespace
}  // namespace kovra
