#include "BLE_kovra/system/GlobalHotkey.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/fakes/FakeHotKeys.h"

namespace kovra {
namespace {

using Calls = std::vector<std::string>;

struct HotkeyRig {
    FakeHotKeys keys;
    GlobalHotkey hotkey{keys};
};

TEST(GlobalHotkeyTest, IsControlOptionTUnderTheProgramsOwnNumber) {
    EXPECT_EQ(GlobalHotkey::hotKey.keyCode, 17U);
    EXPECT_EQ(GlobalHotkey::hotKey.modifiers, 0x1800U);
    EXPECT_EQ(GlobalHotkey::hotKey.signature, 0x54475244U);
    EXPECT_EQ(GlobalHotkey::hotKey.number, 1U);
    HotkeyRig rig;
    rig.hotkey.registerHotKey();
    EXPECT_EQ(rig.keys.registered, std::vector{GlobalHotkey::hotKey});
}

TEST(GlobalHotkeyTest, RequestsNothingBeforeItIsRegistered) {
    const HotkeyRig rig;
    EXPECT_EQ(rig.keys.calls, Calls{});
}

TEST(GlobalHotkeyTest, InstallsItsHandlerBeforeItRegistersTheKey) {
    HotkeyRig rig;
    rig.hotkey.registerHotKey();
    EXPECT_EQ(rig.keys.calls, (Calls{"install", "register"}));
}

TEST(GlobalHotkeyTest, ReleasesTheKeyBeforeItRemovesItsHandler) {
    HotkeyRig rig;
    rig.hotkey.registerHotKey();
    rig.hotkey.unregister();
    EXPECT_EQ(rig.keys.calls, (Calls{"install", "register", "unregister", "remove"}));
    EXPECT_EQ(rig.keys.press(), std::nullopt);
}

TEST(GlobalHotkeyTest, ReleasesOnlyOnce) {
    HotkeyRig rig;
    rig.hotkey.unregister();
    rig.hotkey.registerHotKey();
    rig.hotkey.unregister();
    rig.hotkey.unregister();
    EXPECT_EQ(rig.keys.calls, (Calls{"install", "register", "unregister", "remove"}));
}

TEST(GlobalHotkeyTest, RunsItsTriggerInsideEachPress) {
    HotkeyRig rig;
    int triggered = 0;
    rig.hotkey.onTrigger = [&] { ++triggered; };
    rig.hotkey.registerHotKey();
    for (int presses = 1; presses <= 3; ++presses) {
        EXPECT_EQ(rig.keys.press(), 0);
        EXPECT_EQ(triggered, presses);
    }
}

TEST(GlobalHotkeyTest, SwallowsAPressWithoutATrigger) {
    HotkeyRig rig;
    rig.hotkey.registerHotKey();
    EXPECT_EQ(rig.keys.press(), 0);
}

TEST(GlobalHotkeyTest, RunsTheCurrentTrigger) {
    HotkeyRig rig;
    std::string triggered;
    rig.hotkey.registerHotKey();
    rig.hotkey.onTrigger = [&] { triggered += "first "; };
    rig.keys.press();
    rig.hotkey.onTrigger = [&] { triggered += "second "; };
    rig.keys.press();
    rig.hotkey.onTrigger = nullptr;
    EXPECT_EQ(rig.keys.press(), 0);
    EXPECT_EQ(triggered, "first second ");
}

TEST(GlobalHotkeyTest, LetsATriggerReplaceItself) {
    HotkeyRig rig;
    std::string triggered;
    rig.hotkey.onTrigger = [&rig, &triggered] {
        rig.hotkey.onTrigger = [&triggered] { triggered += "second "; };
        triggered += "first ";
    };
    rig.hotkey.registerHotKey();
    rig.keys.press();
    rig.keys.press();
    EXPECT_EQ(triggered, "first second ");
}

TEST(GlobalHotkeyTest, IgnoresAKeyThatAnotherProgramHolds) {
    HotkeyRig rig;
    rig.keys.takenByAnother = true;
    rig.hotkey.registerHotKey();
    EXPECT_EQ(rig.keys.press(), std::nullopt);
    rig.hotkey.unregister();
    EXPECT_EQ(rig.keys.calls, (Calls{"install", "register", "remove"}));
}

TEST(GlobalHotkeyTest, TellsTheDesktopWhatItDoesBeforeItRegistersTheKey) {
    struct Keys : FakeHotKeys {
        std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) override {
            described = description;
            return FakeHotKeys::registerHotKey(hotKey);
        }
        std::string described;
    } keys;
    GlobalHotkey hotkey(keys);
    hotkey.description = "Mute trackpad";
    hotkey.registerHotKey();
    EXPECT_EQ(keys.described, "Mute trackpad");
}

TEST(GlobalHotkeyTest, IsRequestedFromTheUserOnlyWhileItIsRegistered) {
    HotkeyRig rig;
    rig.hotkey.request();
    EXPECT_EQ(rig.keys.calls, Calls{});
    rig.hotkey.registerHotKey();
    rig.hotkey.request();
    rig.hotkey.unregister();
    rig.hotkey.request();
    EXPECT_EQ(rig.keys.calls, (Calls{"install", "register", "request", "unregister", "remove"}));
}

TEST(GlobalHotkeyTest, RegistersTheKeyEvenIfItsHandlerIsRefused) {
    HotkeyRig rig;
    rig.keys.refuses = true;
    rig.hotkey.registerHotKey();
    EXPECT_EQ(rig.keys.calls, (Calls{"install", "register"}));
    rig.hotkey.unregister();
    EXPECT_EQ(rig.keys.calls, (Calls{"install", "register"}));
}

}  // namespace
}  // namespace kovra
