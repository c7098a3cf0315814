#include "BLE_kovra/platform/linux/hotkeys/DesktopHotKeys.h"

#include <gtest/gtest.h>

#include "tests/platform/linux/hotkeys/PortalRig.h"
#include "tests/platform/linux/hotkeys/XKeyRig.h"
#include "tests/support/Environment.h"

namespace kovra {
namespace {

constexpr HotKey controlOptionT{
    .keyCode = HotKey::ansiT, .modifiers = HotKey::controlKey | HotKey::optionKey, .signature = 1, .number = 1};

TEST(DesktopHotKeysTest, AreGrabbedOnXWithoutThePortal) {
    PortalRig session;
    XKeyRig rig;
    auto hotKeys = DesktopHotKeys::on(Desktop::x11, rig.connection.get(), session.bus);
    const auto hotKey = hotKeys.registerHotKey(controlOptionT);
    ASSERT_NE(hotKey, nullptr);
    session.settle();
    EXPECT_TRUE(session.portal.calls.empty());
}

TEST(DesktopHotKeysTest, AreRequestedFromThePortalOnWayland) {
    PortalRig session;
    auto hotKeys = DesktopHotKeys::on(Desktop::wayland, nullptr, session.bus);
    const auto hotKey = hotKeys.registerHotKey(controlOptionT);
    session.settle();
    hotKey->request();
    session.settle();
    EXPECT_FALSE(session.portal.bound.empty());
}

TEST(DesktopHotKeysTest, AreRefusedWithoutAnXServerOrWayland) {
    PortalRig session;
    for (const Desktop desktop : {Desktop::none, Desktop::x11}) {
        auto hotKeys = DesktopHotKeys::on(desktop, nullptr, session.bus);
        EXPECT_EQ(hotKeys.installHandler([] { return 0; }), nullptr);
        int told = 0;
        hotKeys.onStateChange = [&] { ++told; };
        EXPECT_EQ(hotKeys.registerHotKey(controlOptionT), nullptr);
        EXPECT_EQ(hotKeys.state().holder, HotKeyState::Holder::nobody);
        EXPECT_EQ(told, 1);
    }
    session.settle();
    EXPECT_TRUE(session.portal.calls.empty());
}

}  // namespace
}  // namespace kovra
