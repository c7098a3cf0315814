#include "helper/pads/Muter.h"

#include <system_error>

#include "helper/Log.h"

namespace kovra::helper {

void Muter::muteExactly(const std::vector<std::string>& names) {
    wanted_ = {names.begin(), names.end()};
    std::erase_if(refused_, [this](const std::string& name) { return !wanted_.contains(name); });
    pauses_.startAnew();
    giveBackOthers();
    for (const std::string& name : wanted_) mute(name);
}

void Muter::giveBackOthers() {
    retry_.reset();
    bool isAllBack = true;
    const std::set<std::string> recorded = records_.names();
    for (const std::string& name : recorded) {
        if (!wanted_.contains(name) && !giveBack(name, records_, inputs_)) isAllBack = false;
    }
    if (!isAllBack) retry_ = loop_.after(pauses_.next(), [this] { giveBackOthers(); });
}

void Muter::mute(const std::string& name) {
    const std::optional<bool> isInhibited = inputs_.isInhibited(name);
    if (!isInhibited) return refuse(name, "cannot be muted: it is gone, or the kernel knows no way to");
    if (*isInhibited) {
        if (!records_.names().contains(name)) refuse(name, "is inhibited by somebody else, and left alone");
        return;
    }
    if (const int error = records_.add(name))
        return refuse(name, "is not muted, since it cannot be recorded: " + std::generic_category().message(error));
    if (const int error = inputs_.setInhibited(name, true)) {
        refuse(name, "cannot be muted: " + std::generic_category().message(error));
        giveBack(name, records_, inputs_);
    }
}

void Muter::refuse(const std::string& name, const std::string& line) {
    if (refused_.insert(name).second) log(Severity::warning, name + " " + line);
}

}  // namespace kovra::helper
