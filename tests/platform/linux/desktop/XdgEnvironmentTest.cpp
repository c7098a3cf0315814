#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/Environment.h"

namespace kovra {
namespace {

TEST(XdgEnvironmentTest, PrefersWaylandToX) {
    Environment environment;
    environment.unset({"WAYLAND_DISPLAY", "DISPLAY"});
    EXPECT_EQ(currentDesktop(), Desktop::none);
    environment.set("DISPLAY", ":7");
    EXPECT_EQ(currentDesktop(), Desktop::x11);
    environment.set("WAYLAND_DISPLAY", "");
    EXPECT_EQ(currentDesktop(), Desktop::x11);
    environment.set("WAYLAND_DISPLAY", "wayland-0");
    EXPECT_EQ(currentDesktop(), Desktop::wayland);
    environment.set("DISPLAY", "");
    EXPECT_EQ(currentDesktop(), Desktop::wayland);
}

TEST(XdgEnvironmentTest, ListsTheFoldersOfDataTheUsersFirst) {
    using Folders = std::vector<std::string>;
    Environment environment;
    environment.set("HOME", "/people/anna");
    environment.unset({"XDG_DATA_HOME", "XDG_DATA_DIRS"});
    EXPECT_EQ(dataFolders(), (Folders{"/people/anna/.local/share", "/usr/local/share", "/usr/share"}));
    environment.set("XDG_DATA_HOME", "/data");
    environment.set("XDG_DATA_DIRS", "relative:/one::/two");
    EXPECT_EQ(dataFolders(), (Folders{"/data", "/one", "/two"}));
    environment.set("XDG_DATA_HOME", "relative");
    environment.set("XDG_DATA_DIRS", "relative");
    EXPECT_EQ(dataFolders(), (Folders{"/people/anna/.local/share", "/usr/local/share", "/usr/share"}));
}

}  // namespace
}  // namespace kovra
