#include "BLE_kovra/control/Words.h"

#include <algorithm>

namespace kovra::control {

std::string enumerated(const std::vector<std::string>& items) {
    std::string text;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) text += i + 1 == items.size() ? " and " : ", ";
        text += items[i];
    }
    return text;
}

std::vector<const Pad*> builtInPads(const Facts& facts) {
    std::vector<const Pad*> found;
    for (const Pad& pad : facts.pads) {
        if (pad.kind == Pad::Kind::builtIn) found.push_back(&pad);
    }
    return found;
}

bool isApplicationInCharge(const Facts& facts) {
    return facts.application.hasAnswered() && (!facts.flag.writer || *facts.flag.writer == facts.asker);
}

const Process* processOf(const Facts& facts, const Person& person) {
    const auto& all = facts.application.processes;
    const auto found = std::find_if(all.begin(), all.end(), [&](const Process& each) { return each.user == person; });
    return found == all.end() ? nullptr : &*found;
}

std::string reasonOfSilence(const Facts& facts) {
    using Contact = Application::Contact;
    switch (facts.application.contact) {
        case Contact::answered:
            return "it has answered";
        case Contact::tooOld:
            return "version " + facts.application.version + " tells nothing more";
        case Contact::silent:
            return "it does not answer";
        case Contact::foreign:
            return "another program owns its name on this session bus";
        case Contact::absent:
            return "it is not on this session bus";
        case Contact::noBus:
            return "this session bus cannot be reached (" + facts.application.error + ")";
    }
    return "";
}

bool isServiceAway(const Service& service) {
    return service.state == Service::State::stopped || service.state == Service::State::failed ||
           service.state == Service::State::missing;
}

}  // namespace kovra::control
