#include "BLE_kovra/control/StatusText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/control/Cases.h"

namespace kovra::control {
namespace {

using Contact = Application::Contact;
using Lines = std::vector<std::string>;

bool has(const Facts& facts, const std::string& line) {
    const Lines lines = statusText(facts);
    return std::ranges::find(lines, line) != lines.end();
}

TEST(StatusTextTest, AnswersFirstAndThenListsOneFactALine) {
    EXPECT_EQ(statusText(mutedByMouse()),
              (Lines{"The trackpad is muted: Logitech MX Master 3S is connected.",
                     "Trackpad: SYNA8004:00 06CB:CD8B Touchpad (input17) is muted since 2026-11-23 12:02:07, by the "
                     "time of the flag.",
                     "Application: version 0.3.0 runs, process 1234.", "Switch: on.",
                     "Mode: while a chosen device is connected.", "Chosen: Logitech MX Master 3S is connected.",
                     "Decision: mute.", "Flag: says \"on\" since 2026-11-23 12:02:07; anna may write it.",
                     "Service: runs (enabled), and serves anna.", "At the machine: anna.",
                     "Hot key: Ctrl+Alt+T switches muting.", "Tray: a panel shows the icon."}));
}

TEST(StatusTextTest, ListsTheOppositeOfEachFact) {
    Facts facts = working();
    facts.application.isEnabled = false;
    facts.application.isAlways = true;
    facts.application.chosen = {{"Ball", ChosenDevice::Presence::inGrace}};
    facts.application.hotKey = Application::HotKey::taken;
    facts.application.tray = Application::Tray::none;
    facts.application.sessionBusFailures = {"org.example.Match: refused"};
    facts.application.systemBusFailures = {"org.example.Call: Timeout"};
    facts.flag.writer.reset();
    facts.seat = {true, std::nullopt};
    EXPECT_EQ(
        statusText(facts),
        (Lines{"The trackpad works: muting is switched off.",
               "Trackpad: SYNA8004:00 06CB:CD8B Touchpad (input17) works.",
               "Application: version 0.3.0 runs, process 1234.", "Switch: off.", "Mode: always.",
               "Chosen: Ball was disconnected less than two seconds ago, and still counts.", "Decision: do not mute.",
               "Flag: says \"off\" since 2026-11-23 12:02:07; nobody may write it.",
               "Service: runs (enabled), and serves nobody now.", "At the machine: nobody.",
               "Hot key: another program holds Ctrl+Alt+T.", "Tray: none shows the icon.",
               "Session bus: failed: org.example.Match: refused", "System bus: failed: org.example.Call: Timeout"}));
    facts.application.chosen.clear();
    EXPECT_TRUE(has(facts, "Chosen: nothing."));
}

TEST(StatusTextTest, TakesTheTimeFromTheRecordOfTheServiceIfItCanBeRead) {
    Facts facts = mutedByMouse();
    const std::string pad = "Trackpad: SYNA8004:00 06CB:CD8B Touchpad (input17) is muted";
    facts.pads[0].isRecorded = true;
    facts.pads[0].recordedSince = Moment{1763899328, "2026-11-23 12:02:08"};
    EXPECT_TRUE(has(facts, pad + " since 2026-11-23 12:02:08."));
    facts.pads[0].isRecorded = false;  // so another program has muted it, whenever that was
    facts.pads[0].recordedSince.reset();
    EXPECT_TRUE(has(facts, pad + "."));
    facts = mutedByMouse();
    facts.flag.word = "off";
    EXPECT_TRUE(has(facts, pad + "."));
}

TEST(StatusTextTest, NamesTwinsAndExternalTrackpads) {
    Facts facts = working();
    facts.pads.push_back({.input = "input18", .name = "A Mouse", .kind = Pad::Kind::twin, .isMuted = false});
    facts.pads.push_back({.input = "input19", .name = "Pad", .kind = Pad::Kind::other, .isMuted = false});
    facts.pads.push_back({.input = "input20", .name = "Pad", .kind = Pad::Kind::other, .error = "Permission denied"});
    EXPECT_TRUE(has(facts, "Its twin: A Mouse (input18) works."));
    EXPECT_TRUE(has(facts, "Other trackpad: Pad (input19) works; it is never muted."));
    EXPECT_TRUE(has(facts, "Other trackpad: Pad (input20) cannot be read: Permission denied."));
}

TEST(StatusTextTest, SaysWhyTheApplicationTellsNothing) {
    const auto line = [](Contact contact) { return applicationLine(silenced(mutedByMouse(), contact)); };
    EXPECT_EQ(line(Contact::silent), "Application: runs, process 1234, but it does not answer.");
    EXPECT_EQ(line(Contact::absent), "Application: runs, process 1234, but it is not on this session bus.");
    EXPECT_EQ(line(Contact::noBus),
              "Application: runs, process 1234, but this session bus cannot be reached (Connection refused).");
    EXPECT_EQ(line(Contact::foreign),
              "Application: runs, process 1234, but another program owns its name on this session bus.");
    Facts older = silenced(mutedByMouse(), Contact::tooOld);
    older.application.version = "0.2.0";
    EXPECT_EQ(applicationLine(older),
              "Application: version 0.2.0 runs, process 1234. That version tells nothing more; restart it.");
    for (const Person& person : {boris, root}) {
        EXPECT_EQ(applicationLine(askedBy(person, mutedByMouse())),
                  "Application: runs as anna, process 1234. What it knows, only anna can ask.");
    }
    Facts none = silenced(working(), Contact::absent);
    none.application.processes.clear();
    EXPECT_EQ(applicationLine(none), "Application: does not run.");
    none.asker = boris;
    EXPECT_EQ(applicationLine(none), "Application: does not run as boris. Processes of others may be hidden.");
    none = silenced(working(), Contact::foreign);
    none.application.processes.clear();
    EXPECT_EQ(applicationLine(none), "Application: does not run. Another program owns its name on this session bus.");
    // What it has not told is not listed.
    EXPECT_EQ(statusText(silenced(mutedByMouse(), Contact::silent)).size(), 6U);
}

TEST(StatusTextTest, SaysInWhichStateTheServiceIs) {
    Facts facts = working();
    const auto line = [&](Service::State state, const std::string& unitState) {
        facts.service = {state, "Access denied", unitState};
        return serviceLine(facts);
    };
    EXPECT_EQ(line(Service::State::running, ""), "Service: runs, and serves anna.");
    EXPECT_EQ(line(Service::State::running, "disabled"), "Service: runs (disabled), and serves anna.");
    EXPECT_EQ(line(Service::State::starting, "enabled"), "Service: is starting (enabled).");
    EXPECT_EQ(line(Service::State::stopped, "disabled"), "Service: does not run (disabled).");
    EXPECT_EQ(line(Service::State::failed, "enabled"), "Service: has failed (enabled).");
    EXPECT_EQ(line(Service::State::missing, ""), "Service: is not installed.");
    EXPECT_EQ(line(Service::State::unknown, ""), "Service: cannot be asked: Access denied.");
    facts.flag = {.error = "Permission denied"};
    EXPECT_EQ(line(Service::State::running, ""), "Service: runs.");
}

TEST(StatusTextTest, SaysWhatIsWrongWithTheFlag) {
    Facts facts = working();
    facts.application.lastWritten = "on";
    EXPECT_EQ(flagLine(facts),
              "Flag: says \"off\" since 2026-11-23 12:02:07; anna may write it; the application wrote \"on\" last.");
    facts.flag.writer = boris;  // Anna's application writes another file now
    EXPECT_EQ(flagLine(facts), "Flag: says \"off\" since 2026-11-23 12:02:07; boris may write it.");
    facts.flag.word = "onf";
    EXPECT_EQ(flagLine(facts), "Flag: says neither \"on\" nor \"off\" since 2026-11-23 12:02:07; boris may write it.");
    facts.flag = {.error = "No such file or directory"};
    EXPECT_EQ(flagLine(facts), "Flag: cannot be read: No such file or directory.");
}

TEST(StatusTextTest, SaysWhoAsksFromWhereIfThatMatters) {
    Facts facts = working();
    facts.isRemote = true;
    EXPECT_EQ(seatLine(facts), "At the machine: anna. You are logged in remotely.");
    facts.asker = boris;
    EXPECT_EQ(seatLine(facts), "At the machine: anna. This is boris. You are logged in remotely.");
    facts.isRemote = false;
    EXPECT_EQ(seatLine(facts), "At the machine: anna. This is boris.");
    facts.seat.isKnown = false;
    EXPECT_EQ(seatLine(facts), "At the machine: the login manager does not say.");
}

TEST(StatusTextTest, SaysWhoHasTheHotKeyAndTheIcon) {
    Application application;
    EXPECT_EQ(hotKeyLine(application), "Hot key: the application does not say.");
    application.hotKey = Application::HotKey::onRequest;
    EXPECT_EQ(hotKeyLine(application), "Hot key: none is chosen.");
    application.hotKey = Application::HotKey::unavailable;
    EXPECT_EQ(hotKeyLine(application), "Hot key: this desktop offers none.");
    application.hotKey = Application::HotKey::taken;
    EXPECT_EQ(hotKeyLine(application), "Hot key: another program holds the combination.");
    EXPECT_EQ(trayLine(application), "Tray: the application does not say.");
    application.tray = Application::Tray::embedded;
    EXPECT_EQ(trayLine(application), "Tray: an X11 tray embeds the icon.");
    application.tray = Application::Tray::panel;
    application.watcher = "xfce4-panel";
    EXPECT_EQ(trayLine(application), "Tray: a panel shows the icon (xfce4-panel).");
}

TEST(StatusTextTest, ShowsNoControlCharacter) {
    Facts facts = mutedByMouse();
    facts.pads[0].name = "Pad\x1B[31m";
    facts.application.chosen[0].name = "Mouse\nThe trackpad works.";
    facts.application.sessionBusFailures = {"a\rb"};
    for (const std::string& line : statusText(facts)) {
        EXPECT_EQ(line.find_first_of("\x1B\n\r"), std::string::npos) << line;
    }
}

}  // namespace
}  // namespace kovra::control
