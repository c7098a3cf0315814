#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kovra::control {

// Everything that ble-kovractl has found out. What it could not find out is nullopt, or has the reason in `error`.

struct Moment {
    std::int64_t seconds = 0;  // since 1970, UTC
    std::string text;          // for people, in local time
};

struct Person {
    unsigned id = 0;
    std::string name;
    bool operator==(const Person& other) const { return id == other.id; }
};

struct Process {
    int id = 0;
    Person user;
};

// A touchpad, or the "Mouse" twin of one.
struct Pad {
    enum class Kind { builtIn, twin, other };  // `other` is never muted

    std::string input;  // the kernel's name, such as "input17"
    std::string name;
    Kind kind = Kind::builtIn;
    std::optional<bool> isMuted = std::nullopt;  // the attribute `inhibited`
    std::string error = {};                      // why that is not known
    // Whether the service's record lists it as muted by the service, and since when. Only root may read the record.
    std::optional<bool> isRecorded = std::nullopt;
    std::optional<Moment> recordedSince = std::nullopt;
    // Whether the service has the right to mute it. nullopt if the service's group does not exist.
    std::optional<bool> mayServiceMute = std::nullopt;
    // What decides whether it counts as built in. Nothing here identifies the machine or its owner.
    std::vector<std::pair<std::string, std::string>> properties = {};
};

struct ChosenDevice {
    enum class Presence { connected, inGrace, away };
    std::string name;
    Presence presence = Presence::away;
};

// What the application of the person who asks has told over the session bus.
struct Application {
    enum class Contact {
        answered,
        tooOld,   // it has answered, but that version tells nothing but its number
        silent,   // it does not answer
        foreign,  // another program owns its name
        absent,   // nobody owns its name on this bus
        noBus,    // this session bus cannot be reached
    };
    enum class HotKey { ours, taken, onRequest, unavailable, unknown };
    enum class Tray { panel, embedded, none, unknown };

    Contact contact = Contact::noBus;
    std::string error;               // of the bus
    std::vector<Process> processes;  // of every user, as far as they can be seen

    std::string version;
    bool isEnabled = true;
    bool isAlways = false;  // the mode
    bool isMuting = false;
    std::string lastWritten;  // "on", "off", or empty
    std::vector<ChosenDevice> chosen;
    HotKey hotKey = HotKey::unknown;
    std::string combination;  // such as "Ctrl+Alt+T"
    Tray tray = Tray::unknown;
    std::string watcher;  // the program in which the panel's items register, if it is known
    std::vector<std::string> sessionBusFailures;
    std::vector<std::string> systemBusFailures;

    bool hasAnswered() const { return contact == Contact::answered; }
};

// ble-kovra-helper.
struct Service {
    enum class State { running, starting, stopped, failed, missing, unknown };
    State state = State::unknown;
    std::string error;      // why that is not known
    std::string unitState;  // systemd's word: "enabled", "disabled", "masked", ...
};

struct Flag {
    bool isReadable = false;
    std::string error = {};  // why it is not
    std::string word = {};   // "on", "off", or something that is neither
    std::optional<Moment> written = std::nullopt;
    std::optional<Person> writer = std::nullopt;  // who may write it besides the service
};

// Who is at the machine, by the login manager.
struct Seat {
    bool isKnown = false;
    std::optional<Person> person;
};

struct Facts {
    std::string version;  // of ble-kovractl
    Person asker;
    bool isRemote = false;  // asked over ssh
    std::vector<std::string> desktops;

    std::vector<Pad> pads;
    std::string padsError;  // why the list is not known
    Application application;
    Service service;
    Flag flag;
    Seat seat;
};

}  // namespace kovra::control
