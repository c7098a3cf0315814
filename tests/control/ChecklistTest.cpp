#include "BLE_kovra/control/Checklist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/control/Cases.h"

namespace kovra::control {
namespace {

using Mark = Check::Mark;
using Lines = std::vector<std::string>;

std::string wholeText(const Facts& facts) {
    std::string text;
    for (const std::string& line : checklistText(checklistOf(facts))) text += line + '\n';
    return text;
}

bool says(const Facts& facts, const std::string& part) { return wholeText(facts).find(part) != std::string::npos; }

// Returns the findings that are not right.
Lines wrong(const Facts& facts) {
    Lines found;
    for (const Check& check : checklistOf(facts)) {
        if (check.mark == Mark::wrong) found.push_back(check.finding);
    }
    return found;
}

TEST(ChecklistTest, IsAllRightWhereMutingWorks) {
    for (const Facts& facts : {mutedByMouse(), working()}) {
        EXPECT_EQ(wrong(facts), Lines{});
        EXPECT_EQ(exitCodeOf(checklistOf(facts)), 0);
    }
    EXPECT_EQ(wholeText(working()),
              "ok     The built-in trackpad is recognized: SYNA8004:00 06CB:CD8B Touchpad.\n"
              "ok     Service: runs (enabled), and serves anna.\n"
              "ok     At the machine: anna.\n"
              "ok     Application: version 0.3.0 runs, process 1234.\n"
              "ok     Switch: on.\n"
              "ok     Flag: says \"off\" since 2026-11-23 12:02:07; anna may write it.\n"
              "ok     Hot key: Ctrl+Alt+T switches muting.\n"
              "ok     Tray: a panel shows the icon.\n");
}

TEST(ChecklistTest, NamesTheRemedyBesideWhatIsWrong) {
    Facts facts = working();
    facts.service = {Service::State::stopped, "", "disabled"};
    EXPECT_TRUE(says(facts,
                     "WRONG  Service: does not run (disabled).\n"
                     "       sudo systemctl enable --now ble-kovra-helper\n"));
    EXPECT_EQ(exitCodeOf(checklistOf(facts)), 1);
    facts.service = {Service::State::stopped, "", "masked"};
    EXPECT_TRUE(says(facts, "sudo systemctl unmask ble-kovra-helper\n"));
    facts.service = {Service::State::running, "", "disabled"};
    EXPECT_TRUE(says(facts, "sudo systemctl enable ble-kovra-helper\n"));
    facts.service = {Service::State::failed, "", "enabled"};
    EXPECT_TRUE(says(facts, "journalctl -u ble-kovra-helper -n 20\n"));
    facts.service = {Service::State::missing, "", ""};
    EXPECT_TRUE(says(facts, "Install the package ble-kovra-helper.\n"));
}

TEST(ChecklistTest, NamesTheRemedyForTheApplication) {
    Facts facts = working();
    facts.application.version = "0.2.9";
    EXPECT_TRUE(says(facts,
                     "WRONG  Application: version 0.2.9 runs, but 0.3.0 is installed.\n"
                     "       Quit it (ble-kovractl quit), and start it again.\n"));
    facts = working();
    facts.application.isEnabled = false;
    EXPECT_TRUE(says(facts, "WRONG  Switch: off.\n       ble-kovractl on\n"));
    facts = working();
    facts.application.chosen.clear();
    EXPECT_TRUE(says(facts, "WRONG  Chosen: nothing.\n       ble-kovractl settings\n"));
    facts.application.isAlways = true;
    EXPECT_EQ(wrong(facts), Lines{});
    facts = silenced(working(), Application::Contact::absent);
    EXPECT_TRUE(says(facts, "?      Application: runs, process 1234, but it is not on this session bus.\n"));
    facts.application.processes.clear();
    EXPECT_TRUE(says(facts,
                     "WRONG  Application: does not run.\n"
                     "       Start BLE-kovra from the desktop's programs, or run: ble-kovra\n"));
    facts = silenced(working(), Application::Contact::tooOld);
    EXPECT_TRUE(says(facts, "Quit it in its menu, and start it again.\n"));
}

TEST(ChecklistTest, NamesTheRemedyForTheHotKeyAndTheTray) {
    Facts facts = working();
    facts.application.hotKey = Application::HotKey::taken;
    EXPECT_TRUE(says(facts,
                     "WRONG  Hot key: another program holds Ctrl+Alt+T.\n"
                     "       Often it is the desktop's shortcut for a terminal"));
    facts.application.hotKey = Application::HotKey::onRequest;
    EXPECT_TRUE(says(facts,
                     "WRONG  Hot key: none is chosen.\n"
                     "       Let the desktop ask you for a key: ble-kovractl hotkey. Or:\n"
                     "       Give a key of your choice the command \"ble-kovractl toggle\""));
    facts.application.hotKey = Application::HotKey::unavailable;
    EXPECT_TRUE(says(facts, "the command \"ble-kovractl toggle\""));
    facts = working();
    facts.application.tray = Application::Tray::none;
    EXPECT_TRUE(says(facts, "Add a tray to the panel.\n"));
    EXPECT_FALSE(says(facts, "gnome-shell-extension-appindicator"));
    facts.desktops = {"ubuntu", "GNOME"};
    EXPECT_TRUE(says(facts, "Install the package gnome-shell-extension-appindicator, and log in again.\n"));
    facts = working();
    facts.application.systemBusFailures = {"org.example.Match: refused"};
    EXPECT_TRUE(says(facts,
                     "ok     Tray: a panel shows the icon.\n"
                     "?      System bus: failed: org.example.Match: refused\n"));
}

TEST(ChecklistTest, HasThePropertiesOfATrackpadThatIsNotRecognized) {
    Facts facts = working();
    facts.pads[0].kind = Pad::Kind::other;
    EXPECT_TRUE(says(facts,
                     "WRONG  No built-in trackpad is recognized.\n"
                     "       Each of these counts as external. If one is built in, paste this into a report:\n"
                     "         input17: SYNA8004:00 06CB:CD8B Touchpad\n"
                     "           ID_INPUT_TOUCHPAD=1\n"
                     "           bus=0018\n"));
    facts.pads.clear();
    EXPECT_TRUE(says(facts, "udev reports no touchpad at all."));
    facts.padsError = "udev does not answer";
    EXPECT_TRUE(says(facts, "?      The trackpads cannot be listed: udev does not answer.\n"));
}

TEST(ChecklistTest, SaysHowToUnmuteWhatBLEKovraHasNotMuted) {
    Facts facts = working();
    facts.pads[0].isMuted = true;
    EXPECT_TRUE(says(facts, "       echo 0 | sudo tee /sys/class/input/input17/inhibited\n"));
    facts = mutedByMouse();
    EXPECT_FALSE(says(facts, "sudo tee"));
    facts.pads[0].isMuted = false;
    EXPECT_TRUE(says(facts, "journalctl -u ble-kovra-helper -n 20\n"));
    facts.pads[0].mayServiceMute = false;
    EXPECT_TRUE(says(facts,
                     "WRONG  The service has no right to mute SYNA8004:00 06CB:CD8B Touchpad.\n"
                     "       sudo systemctl restart ble-kovra-helper\n"));
}

TEST(ChecklistTest, ChecksTheFlagOfThePersonAtTheMachine) {
    Facts facts = working();
    facts.application.isMuting = true;
    EXPECT_TRUE(says(facts, "It should say \"on\"."));
    facts = working();
    facts.flag.writer.reset();
    EXPECT_EQ(wrong(facts), Lines{"Flag: says \"off\" since 2026-11-23 12:02:07; nobody may write it."});
    facts.flag = {.error = "No such file or directory"};
    EXPECT_EQ(wrong(facts), Lines{"Flag: cannot be read: No such file or directory."});
    EXPECT_TRUE(says(facts, "       sudo systemctl restart ble-kovra-helper\n"));
    facts.service.state = Service::State::missing;
    EXPECT_FALSE(says(facts, "sudo systemctl"));
    EXPECT_TRUE(says(facts, "       The package ble-kovra-helper creates it.\n"));
}

TEST(ChecklistTest, ForAnotherPersonSaysWhoCanTellMore) {
    Facts facts = askedBy(boris, working());
    EXPECT_TRUE(says(facts,
                     "WRONG  At the machine: anna. This is boris.\n"
                     "       Muting works only for the person at the machine.\n"));
    EXPECT_TRUE(says(facts,
                     "?      Application: runs as anna, process 1234. What it knows, only anna can ask.\n"
                     "       Ask again as anna.\n"));
    facts = working();
    facts.service = {Service::State::unknown, "Access denied", ""};
    EXPECT_EQ(exitCodeOf(checklistOf(facts)), 2);
    facts.seat.isKnown = false;
    EXPECT_TRUE(says(facts, "?      At the machine: the login manager does not say.\n"));
}

}  // namespace
}  // namespace kovra::control
