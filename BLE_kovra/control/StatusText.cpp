#include "BLE_kovra/control/StatusText.h"

#include "BLE_kovra/control/Printable.h"
#include "BLE_kovra/control/Verdict.h"
#include "BLE_kovra/control/Words.h"

namespace kovra::control {

namespace {

std::string presenceText(ChosenDevice::Presence presence) {
    switch (presence) {
        case ChosenDevice::Presence::connected:
            return "is connected";
        case ChosenDevice::Presence::inGrace:
            return "was disconnected less than two seconds ago, and still counts";
        case ChosenDevice::Presence::away:
            return "is not connected";
    }
    return "";
}

std::string kindText(Pad::Kind kind) {
    switch (kind) {
        case Pad::Kind::builtIn:
            return "Trackpad";
        case Pad::Kind::twin:
            return "Its twin";
        case Pad::Kind::other:
            return "Other trackpad";
    }
    return "";
}

std::string numberOf(const Process& process) { return "process " + std::to_string(process.id); }

// Returns since when the pad is muted: by the service's record if it can be read, otherwise by the flag.
std::string sinceText(const Facts& facts, const Pad& pad) {
    if (pad.isRecorded == true && pad.recordedSince) return " since " + pad.recordedSince->text;
    const bool isByFlag = facts.flag.isReadable && facts.flag.word == "on" && facts.flag.written;
    if (pad.isRecorded == false || !isByFlag) return "";
    return " since " + facts.flag.written->text + ", by the time of the flag";
}

void append(std::vector<std::string>& lines, const std::string& bus, const std::vector<std::string>& failures) {
    const std::string start = bus + ": failed: ";
    for (const std::string& failure : failures) lines.push_back(start + failure);
}

void appendKnowledge(std::vector<std::string>& lines, const Application& application) {
    lines.push_back(std::string("Switch: ") + (application.isEnabled ? "on." : "off."));
    lines.push_back(std::string("Mode: ") + (application.isAlways ? "always." : "while a chosen device is connected."));
    for (const ChosenDevice& device : application.chosen)
        lines.push_back("Chosen: " + device.name + ' ' + presenceText(device.presence) + '.');
    if (application.chosen.empty()) lines.emplace_back("Chosen: nothing.");
    lines.push_back(std::string("Decision: ") + (application.isMuting ? "mute." : "do not mute."));
}

}  // namespace

std::string padLine(const Facts& facts, const Pad& pad) {
    std::string line = kindText(pad.kind) + ": " + pad.name + " (" + pad.input + ") ";
    if (!pad.isMuted) return line + "cannot be read: " + pad.error + ".";
    if (!*pad.isMuted) return line + (pad.kind == Pad::Kind::other ? "works; it is never muted." : "works.");
    return line + "is muted" + sinceText(facts, pad) + '.';
}

std::string applicationLine(const Facts& facts) {
    const Application& application = facts.application;
    const Process* own = processOf(facts, facts.asker);
    if (application.hasAnswered() || application.contact == Application::Contact::tooOld) {
        std::string line = "Application: version " + application.version + " runs";
        if (own != nullptr) line += ", " + numberOf(*own);
        if (application.hasAnswered()) return line + '.';
        return line + ". That version tells nothing more; restart it.";
    }
    if (own != nullptr) return "Application: runs, " + numberOf(*own) + ", but " + reasonOfSilence(facts) + '.';
    const auto& all = application.processes;
    if (!all.empty()) {
        const std::string& name = all.front().user.name;
        return "Application: runs as " + name + ", " + numberOf(all.front()) + ". What it knows, only " + name +
               " can ask.";
    }
    std::string line = "Application: does not run";
    if (facts.seat.person && *facts.seat.person != facts.asker)
        line += " as " + facts.asker.name + ". Processes of others may be hidden";
    if (application.contact == Application::Contact::foreign)
        line += ". Another program owns its name on this session bus";
    return line + '.';
}

std::string serviceLine(const Facts& facts) {
    const Service& service = facts.service;
    const std::string enabled = service.unitState.empty() ? "" : " (" + service.unitState + ")";
    switch (service.state) {
        case Service::State::running: {
            const std::string whom = facts.flag.writer ? "serves " + facts.flag.writer->name : "serves nobody now";
            return "Service: runs" + enabled + (facts.flag.isReadable ? ", and " + whom + '.' : ".");
        }
        case Service::State::starting:
            return "Service: is starting" + enabled + '.';
        case Service::State::stopped:
            return "Service: does not run" + enabled + '.';
        case Service::State::failed:
            return "Service: has failed" + enabled + '.';
        case Service::State::missing:
            return "Service: is not installed.";
        case Service::State::unknown:
            break;
    }
    return "Service: cannot be asked: " + service.error + '.';
}

std::string flagLine(const Facts& facts) {
    const Flag& flag = facts.flag;
    if (!flag.isReadable) return "Flag: cannot be read: " + flag.error + '.';
    const bool isWord = flag.word == "on" || flag.word == "off";
    std::string line = isWord ? "Flag: says \"" + flag.word + '"' : R"(Flag: says neither "on" nor "off")";
    if (flag.written) line += " since " + flag.written->text;
    line += flag.writer ? "; " + flag.writer->name + " may write it" : "; nobody may write it";
    if (isApplicationInCharge(facts) && !facts.application.lastWritten.empty() &&
        facts.application.lastWritten != flag.word)
        line += "; the application wrote \"" + facts.application.lastWritten + "\" last";
    return line + '.';
}

std::string seatLine(const Facts& facts) {
    if (!facts.seat.isKnown) return "At the machine: the login manager does not say.";
    if (!facts.seat.person) return "At the machine: nobody.";
    std::string line = "At the machine: " + facts.seat.person->name;
    if (*facts.seat.person != facts.asker) line += ". This is " + facts.asker.name;
    if (facts.isRemote) line += ". You are logged in remotely";
    return line + '.';
}

std::string hotKeyLine(const Application& application) {
    const std::string key = application.combination.empty() ? "the combination" : application.combination;
    switch (application.hotKey) {
        case Application::HotKey::ours:
            return "Hot key: " + key + " switches muting.";
        case Application::HotKey::taken:
            return "Hot key: another program holds " + key + '.';
        case Application::HotKey::onRequest:
            return "Hot key: none is chosen.";
        case Application::HotKey::unavailable:
            return "Hot key: this desktop offers none.";
        case Application::HotKey::unknown:
            break;
    }
    return "Hot key: the application does not say.";
}

std::string trayLine(const Application& application) {
    const std::string by = application.watcher.empty() ? "" : " (" + application.watcher + ")";
    switch (application.tray) {
        case Application::Tray::panel:
            return "Tray: a panel shows the icon" + by + '.';
        case Application::Tray::embedded:
            return "Tray: an X11 tray embeds the icon.";
        case Application::Tray::none:
            return "Tray: none shows the icon.";
        case Application::Tray::unknown:
            break;
    }
    return "Tray: the application does not say.";
}

std::vector<std::string> statusText(const Facts& facts) {
    std::vector<std::string> lines{verdictOf(facts).sentence};
    for (const Pad& pad : facts.pads) lines.push_back(padLine(facts, pad));
    lines.push_back(applicationLine(facts));
    if (facts.application.hasAnswered()) appendKnowledge(lines, facts.application);
    lines.push_back(flagLine(facts));
    lines.push_back(serviceLine(facts));
    lines.push_back(seatLine(facts));
    if (facts.application.hasAnswered()) {
        lines.push_back(hotKeyLine(facts.application));
        lines.push_back(trayLine(facts.application));
        append(lines, "Session bus", facts.application.sessionBusFailures);
        append(lines, "System bus", facts.application.systemBusFailures);
    }
    for (std::string& line : lines) line = printable(line);
    return lines;
}

}  // namespace kovra::control
