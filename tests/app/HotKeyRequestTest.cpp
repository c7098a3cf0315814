#include "BLE_kovra/app/HotKeyRequest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/fakes/FakeHotKeys.h"
#include "tests/fakes/FakePreferences.h"

namespace kovra {
namespace {

using enum HotKeyState::Holder;

// A desktop that asks the user for the hot key, and the user's preferences.
struct Desk {
    FakeHotKeys keys;
    FakePreferences preferences;

    // How often the user was asked, in all starts.
    auto asked() const { return std::ranges::count(keys.calls, "request"); }
};

// A start of the application.
struct Start {
    explicit Start(Desk& on) : desk(on) { hotkey.registerHotKey(); }

    void desktopSays(HotKeyState::Holder holder) {
        desk.keys.change({holder, ""});
        request.stateChanged();
    }

    Desk& desk;
    GlobalHotkey hotkey{desk.keys};
    HotKeyRequest request{hotkey, desk.preferences};
};

// A start in which the user opens the settings, and answers the question with this holder.
void firstStart(Desk& desk, HotKeyState::Holder answer) {
    Start start(desk);
    start.desktopSays(unrequested);
    start.request.settingsOpened();
    start.desktopSays(answer);
}

TEST(HotKeyRequestTest, IsMadeOnceAfterTheSettingsHaveBeenOpened) {
    Desk desk;
    {
        Start start(desk);
        start.desktopSays(unrequested);
        EXPECT_EQ(desk.asked(), 0);
        start.request.settingsOpened();
        EXPECT_EQ(desk.asked(), 1);
        start.request.settingsOpened();
        EXPECT_EQ(desk.asked(), 1);
    }
    for (int starts = 0; starts < 3; ++starts) {
        Start later(desk);
        later.desktopSays(unrequested);
        later.request.settingsOpened();
        EXPECT_EQ(desk.asked(), 1);
    }
}

TEST(HotKeyRequestTest, WaitsForTheDesktopIfTheSettingsAreOpenedFirst) {
    Desk desk;
    Start start(desk);
    start.request.settingsOpened();
    EXPECT_EQ(desk.asked(), 0);
    start.desktopSays(unrequested);
    EXPECT_EQ(desk.asked(), 1);
}

TEST(HotKeyRequestTest, IsRecordedBeforeTheUserCanAnswer) {
    Desk desk;
    bool wasRecorded = false;
    desk.keys.onRequest = [&] { wasRecorded = desk.preferences.boolean("hotKeyRequested"); };
    Start start(desk);
    start.desktopSays(unrequested);
    start.request.settingsOpened();
    EXPECT_EQ(desk.asked(), 1);
    EXPECT_TRUE(wasRecorded);
}

TEST(HotKeyRequestTest, IsNotMadeAgainByItselfAfterARefusal) {
    Desk desk;
    firstStart(desk, refused);
    for (const auto holder : {unrequested, refused}) {
        Start later(desk);
        later.desktopSays(holder);
        later.request.settingsOpened();
        later.desktopSays(nobody);  // the desktop's portal is restarted
        later.desktopSays(holder);
        EXPECT_EQ(desk.asked(), 1);
    }
}

TEST(HotKeyRequestTest, IsMadeAgainAsOftenAsTheUserWants) {
    Desk desk;
    firstStart(desk, refused);
    Start later(desk);
    for (const auto holder : {unrequested, refused}) {
        later.desktopSays(holder);
        later.request.make();
    }
    EXPECT_EQ(desk.asked(), 3);
}

TEST(HotKeyRequestTest, CountsAsMadeIfTheUserMadeItBeforeTheSettingsWereOpened) {
    Desk desk;
    Start start(desk);
    start.desktopSays(unrequested);
    start.request.make();
    start.request.settingsOpened();
    EXPECT_EQ(desk.asked(), 1);
}

TEST(HotKeyRequestTest, IsRepeatedForADesktopThatForgetsWhatItHasGranted) {
    Desk desk;
    firstStart(desk, us);
    for (int starts = 1; starts <= 3; ++starts) {
        Start later(desk);
        later.desktopSays(unrequested);
        EXPECT_EQ(desk.asked(), 1 + starts);
        later.desktopSays(us);
    }
}

TEST(HotKeyRequestTest, IsRepeatedOnlyOnceIfTheUserThenRefuses) {
    Desk desk;
    firstStart(desk, us);
    {
        Start second(desk);
        second.desktopSays(unrequested);
        EXPECT_EQ(desk.asked(), 2);
    }
    Start third(desk);  // the second one ended before the user answered
    third.desktopSays(unrequested);
    third.request.settingsOpened();
    EXPECT_EQ(desk.asked(), 2);
}

TEST(HotKeyRequestTest, IsLeftToADesktopThatRemembersWhatItHasGranted) {
    Desk desk;
    firstStart(desk, us);
    Start(desk).desktopSays(us);
    Start third(desk);  // the user has removed it in the desktop's settings
    third.desktopSays(unrequested);
    third.request.settingsOpened();
    EXPECT_EQ(desk.asked(), 1);
}

TEST(HotKeyRequestTest, IsNotRepeatedForAKeyThatTheUserHasTakenAway) {
    Desk desk;
    {
        Start start(desk);
        start.desktopSays(unrequested);
        start.request.settingsOpened();
        start.desktopSays(us);
        start.desktopSays(refused);
    }
    Start later(desk);
    later.desktopSays(unrequested);
    EXPECT_EQ(desk.asked(), 1);
}

TEST(HotKeyRequestTest, IsNeitherMadeNorRecordedOnADesktopThatDoesNotAsk) {
    for (const auto holder : {us, another, nobody}) {
        Desk desk;
        Start start(desk);
        start.desktopSays(holder);
        start.request.settingsOpened();
        start.request.make();
        EXPECT_EQ(desk.asked(), 0);
        EXPECT_TRUE(desk.preferences.saves.empty());
    }
}

}  // namespace
}  // namespace kovra
