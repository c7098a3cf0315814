#pragma once

#include "BLE_kovra/control/Facts.h"

namespace kovra::control {

inline const Person anna{1000, "anna"};
inline const Person boris{1001, "boris"};
inline const Person root{0, "root"};
inline const Moment noon{1763899327, "2026-11-23 12:02:07"};

inline Pad aPad(bool isMuted) {
    return {.input = "input17",
            .name = "SYNA8004:00 06CB:CD8B Touchpad",
            .kind = Pad::Kind::builtIn,
            .isMuted = isMuted,
            .mayServiceMute = true,
            .properties = {{"ID_INPUT_TOUCHPAD", "1"}, {"bus", "0018"}}};
}

// Anna is at the machine, and everything runs. Her mouse is connected, and the trackpad is muted.
inline Facts mutedByMouse() {
    Facts facts;
    facts.version = "0.3.0";
    facts.asker = anna;
    facts.pads = {aPad(true)};
    facts.application.contact = Application::Contact::answered;
    facts.application.processes = {{1234, anna}};
    facts.application.version = "0.3.0";
    facts.application.isMuting = true;
    facts.application.lastWritten = "on";
    facts.application.chosen = {{"Logitech MX Master 3S", ChosenDevice::Presence::connected}};
    facts.application.hotKey = Application::HotKey::ours;
    facts.application.combination = "Ctrl+Alt+T";
    facts.application.tray = Application::Tray::panel;
    facts.service = {Service::State::running, "", "enabled"};
    facts.flag = {.isReadable = true, .word = "on", .written = noon, .writer = anna};
    facts.seat = {true, anna};
    return facts;
}

// The same with the mouse disconnected, and so an unmuted trackpad.
inline Facts working() {
    Facts facts = mutedByMouse();
    facts.pads = {aPad(false)};
    facts.application.isMuting = false;
    facts.application.lastWritten = "off";
    facts.application.chosen[0].presence = ChosenDevice::Presence::away;
    facts.flag.word = "off";
    return facts;
}

// The same without a reply of the application, although its process runs.
inline Facts silenced(Facts facts, Application::Contact contact) {
    const auto processes = facts.application.processes;
    facts.application = {};
    facts.application.contact = contact;
    facts.application.processes = processes;
    facts.application.error = "Connection refused";
    return facts;
}

// The same, asked by another person.
inline Facts askedBy(const Person& person, Facts facts) {
    facts = silenced(std::move(facts), Application::Contact::absent);
    facts.asker = person;
    return facts;
}

}  // namespace kovra::control
