#include "BLE_kovra/control/Checklist.h"

#include <algorithm>

#include "BLE_kovra/control/Printable.h"
#include "BLE_kovra/control/StatusText.h"
#include "BLE_kovra/control/Verdict.h"
#include "BLE_kovra/control/Words.h"

namespace kovra::control {

namespace {

using Mark = Check::Mark;
using Remedy = std::vector<std::string>;

constexpr const char* restartService = "sudo systemctl restart ble-kovra-helper";

// Returns what decides whether the touchpad counts as built in, for a report.
Remedy propertiesOf(const Pad& pad) {
    Remedy lines{"  " + pad.input + ": " + pad.name};
    for (const auto& [name, value] : pad.properties) lines.push_back("    " + name + "=" + value);
    return lines;
}

Check checkRecognition(const Facts& facts) {
    if (!facts.padsError.empty()) return {Mark::unknown, "The trackpads cannot be listed: " + facts.padsError + '.'};
    const auto pads = builtInPads(facts);
    std::vector<std::string> names;
    for (const Pad* pad : pads) names.push_back(pad->name);
    if (!pads.empty()) return {Mark::right, "The built-in trackpad is recognized: " + enumerated(names) + '.'};
    Check check{Mark::wrong, "No built-in trackpad is recognized.", {}};
    if (facts.pads.empty()) {
        check.remedy = {"udev reports no touchpad at all. Does the desktop's own setting for touchpads list one?"};
        return check;
    }
    check.remedy = {"Each of these counts as external. If one is built in, paste this into a report:"};
    for (const Pad& pad : facts.pads) {
        for (std::string& line : propertiesOf(pad)) check.remedy.push_back(std::move(line));
    }
    return check;
}

Check checkService(const Facts& facts) {
    using State = Service::State;
    const Service& service = facts.service;
    const std::string finding = serviceLine(facts);
    switch (service.state) {
        case State::running:
            if (service.unitState != "disabled") return {Mark::right, finding};
            return {Mark::wrong,
                    "Service: runs, but does not start at boot (disabled).",
                    {"sudo systemctl enable ble-kovra-helper"}};
        case State::starting:
            return {Mark::unknown, finding, {"Look again in a moment."}};
        case State::stopped:
            if (service.unitState == "masked")
                return {Mark::wrong,
                        finding,
                        {"sudo systemctl unmask ble-kovra-helper", "sudo systemctl enable --now ble-kovra-helper"}};
            return {Mark::wrong, finding, {"sudo systemctl enable --now ble-kovra-helper"}};
        case State::failed:
            return {Mark::wrong, finding, {"journalctl -u ble-kovra-helper -n 20", restartService}};
        case State::missing:
            return {Mark::wrong, finding, {"Install the package ble-kovra-helper."}};
        case State::unknown:
            break;
    }
    return {Mark::unknown,
            finding,
            {"systemctl status ble-kovra-helper", "With OpenRC: rc-service ble-kovra-helper status"}};
}

void checkRights(const Facts& facts, std::vector<Check>& checks) {
    for (const Pad* pad : builtInPads(facts)) {
        if (pad->mayServiceMute == false && facts.service.state == Service::State::running)
            checks.push_back({Mark::wrong, "The service has no right to mute " + pad->name + '.', {restartService}});
    }
}

void checkSeat(const Facts& facts, std::vector<Check>& checks) {
    if (!facts.seat.isKnown)
        checks.push_back({Mark::unknown, seatLine(facts), {"loginctl seat-status seat0"}});
    else if (facts.seat.person != facts.asker)
        checks.push_back({Mark::wrong, seatLine(facts), {"Muting works only for the person at the machine."}});
    else
        checks.push_back({Mark::right, seatLine(facts)});
}

Check checkApplication(const Facts& facts) {
    const Application& application = facts.application;
    const std::string finding = applicationLine(facts);
    if (application.hasAnswered()) {
        if (application.version == facts.version) return {Mark::right, finding};
        return {Mark::wrong,
                "Application: version " + application.version + " runs, but " + facts.version + " is installed.",
                {"Quit it (ble-kovractl quit), and start it again."}};
    }
    if (application.contact == Application::Contact::tooOld)
        return {Mark::wrong, finding, {"Quit it in its menu, and start it again."}};
    if (processOf(facts, facts.asker) != nullptr)
        return {Mark::unknown, finding, {"Ask again in a terminal of the desktop in which it runs."}};
    const bool isOthers = !application.processes.empty();
    if (isOthers) return {Mark::unknown, finding, {"Ask again as " + application.processes.front().user.name + "."}};
    return {Mark::wrong, finding, {"Start BLE-kovra from the desktop's programs, or run: ble-kovra"}};
}

void checkChoices(const Facts& facts, std::vector<Check>& checks) {
    const Application& application = facts.application;
    if (!application.hasAnswered()) return;
    if (application.isEnabled)
        checks.push_back({Mark::right, "Switch: on."});
    else
        checks.push_back({Mark::wrong, "Switch: off.", {"ble-kovractl on"}});
    if (application.isAlways || !application.chosen.empty()) return;
    checks.push_back({Mark::wrong, "Chosen: nothing.", {"ble-kovractl settings", "Tick your mouse there."}});
}

Check checkFlag(const Facts& facts) {
    const Flag& flag = facts.flag;
    const std::string finding = flagLine(facts);
    if (!flag.isReadable) {
        const bool isMissing = facts.service.state == Service::State::missing;
        return {Mark::wrong, finding, {isMissing ? "The package ble-kovra-helper creates it." : restartService}};
    }
    if (facts.seat.person && flag.writer != facts.seat.person) return {Mark::wrong, finding, {restartService}};
    const Application& application = facts.application;
    const bool differs = isApplicationInCharge(facts) && facts.seat.person == facts.asker &&
                         flag.word != (application.isMuting ? "on" : "off");
    if (!differs) return {Mark::right, finding};
    return {Mark::wrong,
            finding + " It should say \"" + (application.isMuting ? "on" : "off") + "\".",
            {"journalctl --user -t ble-kovra -n 20", "Quit BLE-kovra (ble-kovractl quit), and start it again."}};
}

Check checkHotKey(const Application& application) {
    const std::string finding = hotKeyLine(application);
    const Remedy own{"Give a key of your choice the command \"ble-kovractl toggle\", in the desktop's settings."};
    switch (application.hotKey) {
        case Application::HotKey::ours:
            return {Mark::right, finding};
        case Application::HotKey::taken: {
            Remedy remedy = own;
            remedy.insert(remedy.begin(),
                          "Often it is the desktop's shortcut for a terminal: remove that, and start "
                          "BLE-kovra again. Or:");
            return {Mark::wrong, finding, remedy};
        }
        case Application::HotKey::onRequest: {
            Remedy remedy = own;
            remedy.insert(remedy.begin(), "Let the desktop ask you for a key: ble-kovractl hotkey. Or:");
            return {Mark::wrong, finding, remedy};
        }
        case Application::HotKey::unavailable:
            return {Mark::wrong, finding, own};
        case Application::HotKey::unknown:
            break;
    }
    return {Mark::unknown, finding};
}

bool isGnome(const Facts& facts) {
    const auto& all = facts.desktops;
    return std::find(all.begin(), all.end(), "GNOME") != all.end();
}

Check checkTray(const Facts& facts) {
    const Application& application = facts.application;
    const std::string finding = trayLine(application);
    if (application.tray == Application::Tray::unknown) return {Mark::unknown, finding};
    if (application.tray != Application::Tray::none) return {Mark::right, finding};
    if (isGnome(facts))
        return {Mark::wrong,
                finding,
                {"Install the package gnome-shell-extension-appindicator, and log in again.",
                 "Without it: ble-kovractl settings"}};
    return {Mark::wrong, finding, {"Add a tray to the panel.", "Without it: ble-kovractl settings"}};
}

void checkBuses(const Application& application, std::vector<Check>& checks) {
    for (const auto* failures : {&application.sessionBusFailures, &application.systemBusFailures}) {
        const char* bus = failures == &application.sessionBusFailures ? "Session bus" : "System bus";
        for (const std::string& failure : *failures)
            checks.push_back({Mark::unknown,
                              std::string(bus) + ": failed: " + failure,
                              {"It may work by now. If not, start BLE-kovra again; if it fails again, report it."}});
    }
}

void checkMuting(const Facts& facts, std::vector<Check>& checks) {
    const Verdict verdict = verdictOf(facts);
    if (verdict.reason == "anotherProgram" || verdict.reason == "leftByService") {
        Check check{Mark::wrong, verdict.sentence, {}};
        for (const Pad* pad : builtInPads(facts)) {
            if (pad->isMuted == true)
                check.remedy.push_back("echo 0 | sudo tee /sys/class/input/" + pad->input + "/inhibited");
        }
        checks.push_back(std::move(check));
    }
    if (verdict.reason == "driverRefuses" || verdict.reason == "serviceHasNot")
        checks.push_back({Mark::wrong, verdict.sentence, {"journalctl -u ble-kovra-helper -n 20", restartService}});
}

const char* label(Mark mark) {
    switch (mark) {
        case Mark::right:
            return "ok     ";
        case Mark::wrong:
            return "WRONG  ";
        case Mark::unknown:
            break;
    }
    return "?      ";
}

}  // namespace

std::vector<Check> checklistOf(const Facts& facts) {
    std::vector<Check> checks{checkRecognition(facts), checkService(facts)};
    checkRights(facts, checks);
    checkSeat(facts, checks);
    checks.push_back(checkApplication(facts));
    checkChoices(facts, checks);
    checks.push_back(checkFlag(facts));
    checkMuting(facts, checks);
    if (facts.application.hasAnswered()) {
        checks.push_back(checkHotKey(facts.application));
        checks.push_back(checkTray(facts));
        checkBuses(facts.application, checks);
    }
    return checks;
}

std::vector<std::string> checklistText(const std::vector<Check>& checks) {
    std::vector<std::string> lines;
    for (const Check& check : checks) {
        lines.push_back(label(check.mark) + printable(check.finding));
        for (const std::string& line : check.remedy) lines.push_back("       " + printable(line));
    }
    return lines;
}

int exitCodeOf(const std::vector<Check>& checks) {
    const auto has = [&](Mark mark) {
        return std::any_of(checks.begin(), checks.end(), [mark](const Check& check) { return check.mark == mark; });
    };
    if (has(Mark::wrong)) return 1;
    return has(Mark::unknown) ? 2 : 0;
}

}  // namespace kovra::control
