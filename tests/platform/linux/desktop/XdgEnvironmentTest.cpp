#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace kovra
