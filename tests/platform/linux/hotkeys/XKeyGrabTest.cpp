#include "BLE_kovra/platform/linux/hotkeys/DesktopHotKeys.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/linux/hotkeys/XKeyRig.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

const Keys hotKeyKeys{key::control, key::alt, key::t};

struct HotKeyRig : XKeyRig {
    int pressed = 0;
    std::unique_ptr<HotKeyService::Reference> handler = hotKeys.installHandler([this] { return ++pressed, 0; });
    std::unique_ptr<HotKeyService::Reference> hotKey;

    bool registerHotKey() {
        hotKey = hotKeys.registerHotKey({.keyCode = HotKey::ansiT,
                                         .modifiers = HotKey::controlKey | HotKey::optionKey,
                                         .signature = 1,
                                         .number = 1});
        turn();
        return hotKey != nullptr;
    }
    HotKeyState::Holder holder() const { return hotKeys.state().holder; }
    // Unregisters the hot key. Waits until the server has processed this, so that the next key is not grabbed any more.
    void unregister() {
        hotKey.reset();
        turn();
    }
    // Presses the keys. Returns "pressed" if the program reported the hot key, followed by "window" if the window
    // received T.
    std::string outcome(const Keys& keys) {
        pressed = 0;
        keyboard.chord(keys);
        turn();
        const std::string ours = pressed == 0 ? "" : pressed == 1 ? "pressed" : "pressed more than once";
        return ours + (keyboard.pressesInTheWindow().empty() ? "" : "window");
    }
    // Returns the outcome of the hot key for every combination of Caps Lock and Num Lock.
    std::vector<std::string> outcomesWithLocks() {
        std::vector<std::string> outcomes;
        for (const xcb_keycode_t lock : {key::capsLock, key::numLock, key::capsLock, key::numLock}) {
            outcomes.push_back(outcome(hotKeyKeys));
            keyboard.tap(lock);
        }
        return outcomes;
    }
};

const std::vector<std::string> pressedWithAllLocks(4, "pressed");
const std::vector<std::string> windowWithAllLocks(4, "window");

struct Layout {
    const char* name;
    std::vector<std::string> arguments;
    xcb_keysym_t symbol;  // the keysym of the T key
    friend void PrintTo(const Layout& layout, std::ostream* out) { *out << layout.name; }
};

class XKeyGrabLayoutTest : public testing::TestWithParam<Layout> {};

TEST_P(XKeyGrabLayoutTest, IsByPositionWhateverTheLocks) {
    HotKeyRig rig;
    TestKeyboard::setMap(GetParam().arguments);
    rig.keyboard.tap(key::a);
    ASSERT_EQ(rig.keyboard.symbolOfT(), GetParam().symbol);
    EXPECT_EQ(rig.outcomesWithLocks(), windowWithAllLocks);
    ASSERT_TRUE(rig.registerHotKey());
    EXPECT_EQ(rig.outcomesWithLocks(), pressedWithAllLocks);
    for (const xcb_keycode_t more : {key::shift, key::super}) {
        EXPECT_EQ(rig.outcome({key::control, key::alt, more, key::t}), "window");
        EXPECT_EQ(rig.outcome({more, key::control, key::alt, key::t}), "window");
    }
    EXPECT_EQ(rig.outcome({key::control, key::t}), "window");
    EXPECT_EQ(rig.outcome({key::alt, key::t}), "window");
    EXPECT_EQ(rig.outcome({key::t}), "window");
    rig.unregister();
    EXPECT_EQ(rig.outcomesWithLocks(), windowWithAllLocks);
}

INSTANTIATE_TEST_SUITE_P(Layouts, XKeyGrabLayoutTest,
                         testing::Values(Layout{"us", {"-layout", "us"}, 't'},
                                         Layout{"RussianOnly", {"-layout", "ru"}, 0x6C5},  // the keysym Cyrillic_ie
                                         Layout{"German", {"-layout", "de"}, 't'},
                                         Layout{"FrenchAzerty", {"-layout", "fr"}, 't'},
                                         Layout{"Dvorak", {"-layout", "us", "-variant", "dvorak"}, 'y'}),
                         [](const auto& tested) { return tested.param.name; });

TEST(XKeyGrabTest, WorksWithTheSecondLayout) {
    HotKeyRig rig;
    TestKeyboard::setMap({"-layout", "us,ru", "-option", "", "-option", "grp:menu_toggle"});
    rig.keyboard.tap(key::menu);
    rig.keyboard.tap(key::t);
    const auto state = rig.keyboard.pressesInTheWindow();
    ASSERT_EQ(state.size(), 1U);
    ASSERT_NE(state[0], 0) << "the layout is still the first";
    ASSERT_TRUE(rig.registerHotKey());
    EXPECT_EQ(rig.outcomesWithLocks(), pressedWithAllLocks);
    rig.keyboard.tap(key::menu);
    EXPECT_EQ(rig.outcomesWithLocks(), pressedWithAllLocks);
}

TEST(XKeyGrabTest, RemainsWhenTheLayoutChanges) {
    HotKeyRig rig;
    ASSERT_TRUE(rig.registerHotKey());
    for (const char* layout : {"ru", "fr", "us"}) {
        TestKeyboard::setMap({"-layout", layout});
        EXPECT_EQ(rig.outcome(hotKeyKeys), "pressed") << layout;
    }
}

TEST(XKeyGrabTest, FollowsAltAndTheLocksToOtherModifierBits) {
    HotKeyRig rig;
    ASSERT_TRUE(rig.registerHotKey());
    rig.keyboard.setModifiers({key::numLock, key::super, key::alt, key::scrollLock, 0});
    rig.turn();
    EXPECT_EQ(rig.outcomesWithLocks(), pressedWithAllLocks);
    rig.keyboard.tap(key::scrollLock);
    EXPECT_EQ(rig.outcomesWithLocks(), pressedWithAllLocks);
    EXPECT_EQ(rig.outcome({key::control, key::super, key::t}), "window");
    rig.unregister();
    EXPECT_EQ(rig.outcomesWithLocks(), windowWithAllLocks);
}

TEST(XKeyGrabTest, ReturnsWithAlt) {
    HotKeyRig rig;
    ASSERT_TRUE(rig.registerHotKey());
    rig.keyboard.setModifiers({key::super, key::numLock, 0, 0, 0});
    rig.turn();
    EXPECT_EQ(rig.outcome(hotKeyKeys), "window");
    EXPECT_EQ(rig.holder(), HotKeyState::Holder::nobody);
    rig.keyboard.setModifiers({key::alt, key::numLock, 0, 0, 0});
    rig.turn();
    EXPECT_EQ(rig.outcome(hotKeyKeys), "pressed");
    EXPECT_EQ(rig.holder(), HotKeyState::Holder::us);
}

TEST(XKeyGrabTest, LeavesTheKeyToAnotherProgramThatHasItWithAnyLockAndSaysSo) {
    for (const std::uint16_t locks : std::vector<std::uint16_t>{0, 2, 16, 18}) {
        HotKeyRig rig;
        rig.keyboard.grabT(static_cast<std::uint16_t>(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | locks));
        rig.registerHotKey();
        EXPECT_EQ(rig.holder(), HotKeyState::Holder::another) << locks;
        rig.keyboard.ungrabT();
        EXPECT_EQ(rig.outcome(hotKeyKeys), "window") << locks;
        EXPECT_EQ(rig.pressed, 0);
    }
}

TEST(XKeyGrabTest, TakesTheKeyWhenAnotherProgramHasLeftItAndTheKeyboardMapChanges) {
    HotKeyRig rig;
    rig.keyboard.grabT(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1);
    rig.registerHotKey();
    TestKeyboard::setMap({"-layout", "ru"});
    rig.turn();
    EXPECT_EQ(rig.holder(), HotKeyState::Holder::another);
    rig.keyboard.ungrabT();
    int told = 0;
    rig.hotKeys.onStateChange = [&] { ++told; };
    TestKeyboard::setMap({"-layout", "us"});
    rig.turn();
    EXPECT_EQ(rig.holder(), HotKeyState::Holder::us);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(rig.outcomesWithLocks(), pressedWithAllLocks);
}

TEST(XKeyGrabTest, TakesTheKeyWhenAnotherProgramHasLeftItAndAWindowManagerStarts) {
    HotKeyRig rig;
    rig.keyboard.grabT(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1);
    rig.registerHotKey();
    rig.keyboard.ungrabT();
    rig.keyboard.announceManager();
    rig.turn();
    EXPECT_EQ(rig.holder(), HotKeyState::Holder::us);
    EXPECT_EQ(rig.outcomesWithLocks(), pressedWithAllLocks);
}

TEST(XKeyGrabTest, TakesTheKeyWhenAnotherProgramHasLeftItAndTheWindowManagerEnds) {
    HotKeyRig rig;
    rig.keyboard.startManager();
    rig.keyboard.grabT(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1);
    rig.registerHotKey();
    rig.keyboard.endManager();
    rig.turn();
    EXPECT_EQ(rig.holder(), HotKeyState::Holder::another);
    // A window manager that starts where there was none is noticed by its announcement.
    rig.keyboard.startManager();
    rig.keyboard.announceManager();
    rig.turn();
    EXPECT_EQ(rig.holder(), HotKeyState::Holder::another);
    rig.keyboard.ungrabT();
    rig.keyboard.endManager();
    rig.turn();
    EXPECT_EQ(rig.holder(), HotKeyState::Holder::us);
    EXPECT_EQ(rig.outcomesWithLocks(), pressedWithAllLocks);
}

TEST(XKeyGrabTest, HearsOfNoManagerWhileItHasTheKey) {
    HotKeyRig rig;
    ASSERT_TRUE(rig.registerHotKey());
    int events = 0;
    const auto listening = rig.connection->listen([&](const xcb_generic_event_t&) { ++events; });
    rig.keyboard.announceManager();
    rig.turn();
    EXPECT_EQ(events, 0);
    EXPECT_EQ(rig.holder(), HotKeyState::Holder::us);
}

TEST(XKeyGrabTest, CountsAHeldKeyAsOnePress) {
    HotKeyRig rig;
    ASSERT_TRUE(rig.registerHotKey());
    int repeats = 0;
    const auto listening = rig.connection->listen([&](const xcb_generic_event_t& event) {
        if (XConnection::kindOf(event) == XCB_KEY_PRESS) ++repeats;
    });
    for (const xcb_keycode_t each : hotKeyKeys) rig.keyboard.down(each);
    bool isOver = false;
    rig.loop.asyncAfter(3s, [&] { isOver = true; });
    rig.loop.runUntil([&] { return isOver; });
    EXPECT_EQ(rig.pressed, 1);
    EXPECT_GT(repeats, 20);
    for (const xcb_keycode_t each : hotKeyKeys) rig.keyboard.up(each);
    rig.turn();
    EXPECT_EQ(rig.outcome(hotKeyKeys), "pressed");
}

TEST(XKeyGrabTest, CountsEachPressWhileTheModifiersAreHeld) {
    HotKeyRig rig;
    ASSERT_TRUE(rig.registerHotKey());
    rig.keyboard.down(key::control);
    rig.keyboard.down(key::alt);
    for (int presses = 1; presses <= 5; ++presses) {
        rig.keyboard.tap(key::t);
        rig.turn();
        EXPECT_EQ(rig.pressed, presses);
    }
}

TEST(XKeyGrabTest, CountsAKeyHeldDuringALayoutChangeAsOnePress) {
    HotKeyRig rig;
    ASSERT_TRUE(rig.registerHotKey());
    for (const xcb_keycode_t each : hotKeyKeys) rig.keyboard.down(each);
    TestKeyboard::setMap({"-layout", "ru"});
    rig.turn();
    EXPECT_EQ(rig.pressed, 1);
    for (const xcb_keycode_t each : hotKeyKeys) rig.keyboard.up(each);
    rig.turn();
    EXPECT_EQ(rig.outcome(hotKeyKeys), "pressed");
}

TEST(XKeyGrabTest, MayBeDestroyedByItsOwnPress) {
    HotKeyRig rig;
    ASSERT_TRUE(rig.registerHotKey());
    const auto second = rig.hotKeys.installHandler([&] { return rig.hotKey.reset(), 0; });
    EXPECT_EQ(rig.outcome(hotKeyKeys), "pressed");
    EXPECT_EQ(rig.outcome(hotKeyKeys), "window");
}

TEST(XKeyGrabTest, EndsWithTheProgram) {
    HotKeyRig rig;
    ASSERT_TRUE(rig.registerHotKey());
    EXPECT_EQ(rig.outcome(hotKeyKeys), "pressed");
    rig.hotKey.reset();
    rig.connection.reset();
    // The server notices the end of the connection some time later.
    std::vector<std::uint16_t> seen;
    for (int tries = 0; seen.empty() && tries < 500; ++tries) {
        rig.keyboard.chord(hotKeyKeys);
        seen = rig.keyboard.pressesInTheWindow();
    }
    EXPECT_FALSE(seen.empty());
}

TEST(XKeyGrabTest, RefusesAnotherKeyOrOtherModifiers) {
    HotKeyRig rig;
    constexpr std::uint32_t commandKey = 0x0100;
    for (const HotKey other :
         {HotKey{.keyCode = 0x10, .modifiers = HotKey::controlKey | HotKey::optionKey},
          HotKey{.keyCode = HotKey::ansiT, .modifiers = HotKey::controlKey},
          HotKey{.keyCode = HotKey::ansiT, .modifiers = 0},
          HotKey{.keyCode = HotKey::ansiT, .modifiers = HotKey::controlKey | HotKey::optionKey | commandKey}}) {
        EXPECT_EQ(rig.hotKeys.registerHotKey(other), nullptr);
    }
    EXPECT_EQ(rig.outcomesWithLocks(), windowWithAllLocks);
}

TEST(XKeyGrabTest, DoesNotBlockWhileTheServerHangs) {
    HotKeyRig rig;
    const auto somethingElseHappens = [&] {
        bool happened = false;
        rig.loop.async([&] { happened = true; });
        return turnUntil(rig.loop, [&] { return happened; });
    };
    rig.screen.pause();
    const HotKey hotKey{
        .keyCode = HotKey::ansiT, .modifiers = HotKey::controlKey | HotKey::optionKey, .signature = 1, .number = 1};
    rig.hotKey = rig.hotKeys.registerHotKey(hotKey);
    EXPECT_TRUE(somethingElseHappens());
    rig.hotKey.reset();
    EXPECT_TRUE(somethingElseHappens());
    rig.hotKey = rig.hotKeys.registerHotKey(hotKey);
    rig.screen.goOn();
    rig.turn();
    EXPECT_EQ(rig.outcome(hotKeyKeys), "pressed");
}

TEST(XKeyGrabTest, StaysSilentAfterTheServerHasEnded) {
    HotKeyRig rig;
    rig.screen.end();
    rig.hotKey = rig.hotKeys.registerHotKey(
        {.keyCode = HotKey::ansiT, .modifiers = HotKey::controlKey | HotKey::optionKey, .signature = 1, .number = 1});
    EXPECT_TRUE(turnUntil(rig.loop, [&] { return rig.lost == 1; }));
    EXPECT_EQ(rig.pressed, 0);
}

}  // namespace
}  // namespace kovra
