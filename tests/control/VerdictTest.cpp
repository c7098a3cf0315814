#include "BLE_kovra/control/Verdict.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/control/Cases.h"

namespace kovra::control {
namespace {

using Answer = Verdict::Answer;
using Contact = Application::Contact;
using Presence = ChosenDevice::Presence;

void expect(const Facts& facts, Answer answer, const std::string& reason, const std::string& sentence) {
    const Verdict verdict = verdictOf(facts);
    EXPECT_EQ(static_cast<int>(verdict.answer), static_cast<int>(answer)) << sentence;
    EXPECT_EQ(verdict.reason, reason);
    EXPECT_EQ(verdict.sentence, sentence);
}

TEST(VerdictTest, NamesTheMouseThatMutes) {
    Facts facts = mutedByMouse();
    expect(facts, Answer::muted, "deviceConnected", "The trackpad is muted: Logitech MX Master 3S is connected.");
    facts.application.chosen.push_back({"Ball", Presence::connected});
    facts.application.chosen.push_back({"Pen", Presence::away});
    expect(facts, Answer::muted, "deviceConnected",
           "The trackpad is muted: Logitech MX Master 3S and Ball are connected.");
    facts.application.chosen[1].presence = Presence::inGrace;
    expect(facts, Answer::muted, "deviceConnected", "The trackpad is muted: Logitech MX Master 3S is connected.");
    facts.application.chosen[0].presence = Presence::inGrace;
    expect(facts, Answer::muted, "deviceInGrace",
           "The trackpad is muted: Logitech MX Master 3S and Ball were disconnected less than two seconds ago.");
    facts.application.chosen[1].presence = Presence::away;
    expect(facts, Answer::muted, "deviceInGrace",
           "The trackpad is muted: Logitech MX Master 3S was disconnected less than two seconds ago.");
    facts.application.chosen[0].presence = Presence::away;
    expect(facts, Answer::muted, "flagOn", "The trackpad is muted: the flag says \"on\".");
}

TEST(VerdictTest, NamesTheModeAlways) {
    Facts facts = mutedByMouse();
    facts.application.isAlways = true;
    facts.application.chosen.clear();
    expect(facts, Answer::muted, "modeAlways", "The trackpad is muted: muting is switched on, in the mode \"always\".");
}

TEST(VerdictTest, SaysWhyAnUnmutedTrackpadWorks) {
    Facts facts = working();
    expect(facts, Answer::works, "noDeviceConnected", "The trackpad works: Logitech MX Master 3S is not connected.");
    facts.application.chosen.push_back({"Ball", Presence::away});
    expect(facts, Answer::works, "noDeviceConnected", "The trackpad works: none of the 2 chosen devices is connected.");
    facts.application.chosen.clear();
    expect(facts, Answer::works, "noDeviceChosen", "The trackpad works: no mouse is chosen in the settings.");
    facts.application.isEnabled = false;
    expect(facts, Answer::works, "switchOff", "The trackpad works: muting is switched off.");
}

TEST(VerdictTest, SaysWhatKeepsTheTrackpadFromBeingMuted) {
    Facts wanted = mutedByMouse();
    wanted.pads = {aPad(false)};
    const std::string although = "The trackpad works, although BLE-kovra wants it muted: ";
    expect(wanted, Answer::works, "serviceHasNot", although + "the service has not muted it.");

    Facts facts = wanted;
    facts.pads[0].mayServiceMute = false;
    expect(facts, Answer::works, "serviceMayNot", although + "the service has no right to mute it.");
    facts = wanted;
    facts.service.state = Service::State::missing;
    facts.flag = {.error = "No such file or directory"};
    expect(facts, Answer::works, "serviceMissing", although + "the package ble-kovra-helper is not installed.");
    for (const auto state : {Service::State::stopped, Service::State::failed}) {
        facts = wanted;
        facts.service.state = state;
        expect(facts, Answer::works, "serviceNotRunning", although + "the service that mutes it does not run.");
    }
    facts = wanted;
    facts.flag.word = "off";
    expect(facts, Answer::works, "flagOff", although + "the flag says \"off\".");
    facts.application.lastWritten = "off";
    expect(facts, Answer::works, "flagNotWritten", although + "it could not write the flag.");
    facts.flag = {.error = "No such file or directory"};
    expect(facts, Answer::works, "flagMissing", although + "the flag cannot be read (No such file or directory).");
    facts = wanted;
    facts.seat = {true, std::nullopt};
    expect(facts, Answer::works, "nobodyAtMachine", although + "nobody is at the machine.");
}

TEST(VerdictTest, SaysThatAnotherPersonIsAtTheMachine) {
    Facts facts = mutedByMouse();  // Anna's application wants it muted, but Boris has taken over
    facts.pads = {aPad(false)};
    facts.seat = {true, boris};
    facts.flag.writer = boris;
    facts.flag.word = "off";
    expect(facts, Answer::works, "otherPersonAtMachine",
           "The trackpad works, although BLE-kovra wants it muted: boris is at the machine.");
}

TEST(VerdictTest, NamesAnotherProgramOnlyIfBLEKovraCannotHaveMuted) {
    Facts facts = working();
    facts.pads = {aPad(true)};
    expect(facts, Answer::muted, "anotherProgram",
           "The trackpad is muted, but not by BLE-kovra: the flag says \"off\". Another program has inhibited it.");
    facts.service.state = Service::State::stopped;
    expect(facts, Answer::muted, "anotherProgram",
           "The trackpad is muted, but not by BLE-kovra, whose service does not run: another program has inhibited "
           "it.");
    facts.pads[0].isRecorded = true;
    expect(facts, Answer::muted, "leftByService", "The trackpad is muted: the service has ended and has left it so.");
    facts.service.state = Service::State::running;
    expect(facts, Answer::muted, "driverRefuses",
           "The trackpad is muted, although the flag says \"off\": the service cannot unmute it yet.");
}

TEST(VerdictTest, DoesNotHideThatTheFlagContradictsTheDecision) {
    Facts facts = mutedByMouse();
    facts.application.isMuting = false;
    expect(facts, Answer::muted, "flagOn",
           "The trackpad is muted, although BLE-kovra has decided to unmute it: the flag still says \"on\".");
}

TEST(VerdictTest, WithoutAReplyOfTheApplicationRestsOnTheFlag) {
    const std::string muted = "The trackpad is muted: the flag says \"on\". BLE-kovra cannot be asked why: ";
    const auto with = [](Contact contact) { return silenced(mutedByMouse(), contact); };
    expect(with(Contact::silent), Answer::muted, "flagOn", muted + "it does not answer.");
    expect(with(Contact::absent), Answer::muted, "flagOn", muted + "it is not on this session bus.");
    expect(with(Contact::foreign), Answer::muted, "flagOn",
           muted + "another program owns its name on this session bus.");
    expect(with(Contact::noBus), Answer::muted, "flagOn",
           muted + "this session bus cannot be reached (Connection refused).");
    Facts older = with(Contact::tooOld);
    older.application.version = "0.2.0";
    expect(older, Answer::muted, "flagOn", muted + "version 0.2.0 tells nothing more.");

    Facts facts = silenced(working(), Contact::silent);
    expect(facts, Answer::works, "flagOff", "The trackpad works: the flag says \"off\".");
    facts.application.processes.clear();
    expect(facts, Answer::works, "applicationNotRunning", "The trackpad works: BLE-kovra is not running.");
    facts.flag.word = "on";
    expect(facts, Answer::works, "applicationNotRunning", "The trackpad works: BLE-kovra is not running.");
}

TEST(VerdictTest, AskedByAnotherPersonNamesWhoCanTell) {
    for (const Person& person : {boris, root}) {
        expect(askedBy(person, mutedByMouse()), Answer::muted, "flagOn",
               "The trackpad is muted: the application of anna wants it, and only anna can ask it why.");
        expect(askedBy(person, working()), Answer::works, "flagOff", "The trackpad works: the flag says \"off\".");
    }
    Facts hidden = askedBy(boris, working());
    hidden.application.processes.clear();
    expect(hidden, Answer::works, "flagOff", "The trackpad works: the flag says \"off\".");
    Facts seen = askedBy(root, working());
    seen.application.processes.clear();
    expect(seen, Answer::works, "applicationNotRunning", "The trackpad works: BLE-kovra is not running.");
    Facts stale = askedBy(boris, mutedByMouse());
    stale.pads = {aPad(false)};
    expect(stale, Answer::works, "serviceHasNot",
           "The trackpad works, although the flag says \"on\": the service has not muted it.");
    Facts unreadable = askedBy(boris, mutedByMouse());
    unreadable.flag = {.error = "Permission denied"};
    expect(unreadable, Answer::muted, "unknown",
           "The trackpad is muted. Why cannot be told: the flag cannot be read (Permission denied).");
    unreadable.pads = {aPad(false)};
    expect(unreadable, Answer::works, "flagMissing",
           "The trackpad works: there is no flag that could be read (Permission denied).");
}

TEST(VerdictTest, IsUnknownWithoutATrackpadOrItsState) {
    Facts facts = working();
    facts.pads.clear();
    expect(
        facts, Answer::unknown, "noTrackpad",
        "Whether the trackpad is muted cannot be told: no built-in trackpad is recognized. See ble-kovractl doctor.");
    facts.pads = {aPad(true)};
    facts.pads[0].kind = Pad::Kind::other;
    EXPECT_EQ(verdictOf(facts).reason, "noTrackpad");
    facts.pads[0].kind = Pad::Kind::builtIn;
    facts.pads[0].isMuted = std::nullopt;
    facts.pads[0].error = "No such file or directory";
    expect(facts, Answer::unknown, "unreadable",
           "Whether the trackpad is muted cannot be told: the state of input17 cannot be read (No such file or "
           "directory).");
    facts.padsError = "udev does not answer";
    expect(facts, Answer::unknown, "unreadable", "Whether the trackpad is muted cannot be told: udev does not answer.");
}

TEST(VerdictTest, CountsSeveralTrackpads) {
    Facts facts = mutedByMouse();
    facts.pads.push_back(aPad(true));
    EXPECT_EQ(verdictOf(facts).sentence, "The trackpads are muted: Logitech MX Master 3S is connected.");
    facts.pads[1].isMuted = false;
    EXPECT_EQ(verdictOf(facts).sentence, "1 of 2 trackpads is muted: Logitech MX Master 3S is connected.");
    EXPECT_EQ(static_cast<int>(verdictOf(facts).answer), 1);
    facts.pads[1].kind = Pad::Kind::twin;
    EXPECT_EQ(verdictOf(facts).sentence, "The trackpad is muted: Logitech MX Master 3S is connected.");
    facts = working();
    facts.pads.push_back(aPad(false));
    EXPECT_EQ(verdictOf(facts).sentence, "The trackpads work: Logitech MX Master 3S is not connected.");
}

TEST(VerdictTest, ShowsNoControlCharacterOfAName) {
    Facts facts = mutedByMouse();
    facts.application.chosen[0].name = "Mouse\x1B[2J\n\xC2\x9B";
    EXPECT_EQ(verdictOf(facts).sentence, "The trackpad is muted: Mouse?[2J?? is connected.");
}

}  // namespace
}  // namespace kovra::control
