#include "BLE_kovra/control/Verdict.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "BLE_kovra/control/Printable.h"
#include "BLE_kovra/control/Words.h"

namespace kovra::control {

namespace {

using Answer = Verdict::Answer;
using Presence = ChosenDevice::Presence;

struct Reason {
    std::string code;
    std::string clause;  // the end of the sentence
};

std::vector<std::string> namesOf(const Application& application, Presence presence) {
    std::vector<std::string> names;
    for (const ChosenDevice& device : application.chosen) {
        if (device.presence == presence) names.push_back(device.name);
    }
    return names;
}

std::string verb(const std::vector<std::string>& names, const char* one, const char* several) {
    return enumerated(names) + (names.size() == 1 ? one : several);
}

std::string saysOff() { return "the flag says \"off\""; }

Reason mutedByApplication(const Application& application) {
    if (application.isAlways) return {"modeAlways", ": muting is switched on, in the mode \"always\"."};
    const auto connected = namesOf(application, Presence::connected);
    if (!connected.empty()) return {"deviceConnected", ": " + verb(connected, " is connected.", " are connected.")};
    const auto leaving = namesOf(application, Presence::inGrace);
    if (!leaving.empty()) {
        return {"deviceInGrace", ": " + verb(leaving, " was", " were") + " disconnected less than two seconds ago."};
    }
    return {"flagOn", ": the flag says \"on\"."};
}

Reason mutedByFlag(const Facts& facts) {
    const Application& application = facts.application;
    if (isApplicationInCharge(facts)) {
        if (application.isMuting) return mutedByApplication(application);
        return {"flagOn", ", although BLE-kovra has decided to unmute it: the flag still says \"on\"."};
    }
    if (facts.flag.writer && *facts.flag.writer != facts.asker) {
        const std::string& name = facts.flag.writer->name;
        return {"flagOn", ": the application of " + name + " wants it, and only " + name + " can ask it why."};
    }
    return {"flagOn", ": the flag says \"on\". BLE-kovra cannot be asked why: " + reasonOfSilence(facts) + "."};
}

// Returns why the trackpad is muted.
Reason reasonOfMuting(const Facts& facts, bool isRecorded) {
    if (isServiceAway(facts.service)) {
        if (isRecorded) return {"leftByService", ": the service has ended and has left it so."};
        return {"anotherProgram",
                ", but not by BLE-kovra, whose service does not run: another program has inhibited it."};
    }
    if (!facts.flag.isReadable)
        return {"unknown", ". Why cannot be told: the flag cannot be read (" + facts.flag.error + ")."};
    if (facts.flag.word == "on") return mutedByFlag(facts);
    if (isRecorded) return {"driverRefuses", ", although " + saysOff() + ": the service cannot unmute it yet."};
    return {"anotherProgram", ", but not by BLE-kovra: " + saysOff() + ". Another program has inhibited it."};
}

// Returns what keeps the service from muting although the application or the flag says "on".
Reason obstacle(const Facts& facts, const std::vector<const Pad*>& pads) {
    using State = Service::State;
    if (facts.service.state == State::missing)
        return {"serviceMissing", "the package ble-kovra-helper is not installed."};
    if (isServiceAway(facts.service)) return {"serviceNotRunning", "the service that mutes it does not run."};
    if (facts.seat.isKnown && !facts.seat.person) return {"nobodyAtMachine", "nobody is at the machine."};
    const Person& owner = facts.flag.writer.value_or(facts.asker);
    if (facts.seat.isKnown && *facts.seat.person != owner)
        return {"otherPersonAtMachine", facts.seat.person->name + " is at the machine."};
    if (facts.seat.isKnown && facts.application.hasAnswered() && *facts.seat.person != facts.asker)
        return {"otherPersonAtMachine", facts.seat.person->name + " is at the machine."};
    if (!facts.flag.isReadable) return {"flagMissing", "the flag cannot be read (" + facts.flag.error + ")."};
    if (facts.flag.word != "on") {
        if (facts.application.hasAnswered() && facts.application.lastWritten != "on")
            return {"flagNotWritten", "it could not write the flag."};
        return {"flagOff", saysOff() + "."};
    }
    const bool isDenied =
        std::any_of(pads.begin(), pads.end(), [](const Pad* pad) { return pad->mayServiceMute == false; });
    if (isDenied) return {"serviceMayNot", "the service has no right to mute it."};
    return {"serviceHasNot", "the service has not muted it."};
}

Reason unmutedByApplication(const Application& application) {
    if (!application.isEnabled) return {"switchOff", ": muting is switched off."};
    if (application.chosen.empty()) return {"noDeviceChosen", ": no mouse is chosen in the settings."};
    const auto away = namesOf(application, Presence::away);
    if (application.chosen.size() == 1 && away.size() == 1)
        return {"noDeviceConnected", ": " + away.front() + " is not connected."};
    return {"noDeviceConnected",
            ": none of the " + std::to_string(application.chosen.size()) + " chosen devices is connected."};
}

// Returns whether the processes of the person whose application would count can be seen.
bool isSeen(const Facts& facts) {
    constexpr unsigned root = 0;
    return facts.asker.id == root || !facts.seat.isKnown || !facts.seat.person || *facts.seat.person == facts.asker;
}

Reason reasonOfWorking(const Facts& facts, const std::vector<const Pad*>& pads) {
    if (facts.application.hasAnswered() && (isApplicationInCharge(facts) || facts.flag.word != "on")) {
        if (!facts.application.isMuting) return unmutedByApplication(facts.application);
        const Reason why = obstacle(facts, pads);
        return {why.code, ", although BLE-kovra wants it muted: " + why.clause};
    }
    if (facts.application.processes.empty() && isSeen(facts))
        return {"applicationNotRunning", ": BLE-kovra is not running."};
    if (!facts.flag.isReadable)
        return {"flagMissing", ": there is no flag that could be read (" + facts.flag.error + ")."};
    if (facts.flag.word != "on") return {"flagOff", ": " + saysOff() + "."};
    const Reason why = obstacle(facts, pads);
    return {why.code, ", although the flag says \"on\": " + why.clause};
}

std::string subject(std::size_t muted, std::size_t all) {
    if (all == 1) return muted == 1 ? "The trackpad is muted" : "The trackpad works";
    if (muted == 0) return "The trackpads work";
    if (muted == all) return "The trackpads are muted";
    return std::to_string(muted) + " of " + std::to_string(all) + " trackpads " + (muted == 1 ? "is" : "are") +
           " muted";
}

Verdict unknown(const std::string& code, const std::string& why) {
    return {Answer::unknown, code, "Whether the trackpad is muted cannot be told: " + why};
}

}  // namespace

Verdict verdictOf(const Facts& facts) {
    const auto pads = builtInPads(facts);
    if (!facts.padsError.empty()) return unknown("unreadable", facts.padsError + ".");
    if (pads.empty()) return unknown("noTrackpad", "no built-in trackpad is recognized. See ble-kovractl doctor.");
    const auto muted = static_cast<std::size_t>(
        std::count_if(pads.begin(), pads.end(), [](const Pad* pad) { return pad->isMuted == true; }));
    const auto unread = std::find_if(pads.begin(), pads.end(), [](const Pad* pad) { return !pad->isMuted; });
    if (muted == 0 && unread != pads.end())
        return unknown("unreadable",
                       "the state of " + (*unread)->input + " cannot be read (" + (*unread)->error + ").");
    const bool isRecorded =
        std::any_of(pads.begin(), pads.end(), [](const Pad* pad) { return pad->isRecorded == true; });
    const Reason why = muted > 0 ? reasonOfMuting(facts, isRecorded) : reasonOfWorking(facts, pads);
    return {muted > 0 ? Answer::muted : Answer::works, why.code, printable(subject(muted, pads.size()) + why.clause)};
}

}  // namespace kovra::control
