#include "helper/pads/Muter.h"

#include <system_error>

#include "helper/Log.h"
#include "helper/pads/Unmute.h"

namespace kovra::helper {

void Muter::muteOnly(const std::vector<std::string>& names) {
    wanted_ = {names.begin(), names.end()};
    std::erase_if(logged_, [this](const std::string& name) { return !wanted_.contains(name); });
    backoff_.reset();
    unmuteOthers();
    for (const std::string& name : wanted_) mute(name);
}

void Muter::unmuteOthers() {
    retry_.reset();
    bool areAllUnmuted = true;
    const std::set<std::string> listed = mutedPads_.names();
    for (const std::string& name : listed) {
        if (!wanted_.contains(name) && !unmute(name, mutedPads_, attribute_)) areAllUnmuted = false;
    }
    if (!areAllUnmuted) retry_ = loop_.after(backoff_.nextDelay(), [this] { unmuteOthers(); });
}

void Muter::mute(const std::string& name) {
    const std::optional<bool> isInhibited = attribute_.isInhibited(name);
    if (!isInhibited) return logOnce(name, "cannot be muted: it was removed, or the kernel cannot inhibit it");
    if (*isInhibited) {
        if (!mutedPads_.names().contains(name)) logOnce(name, "is inhibited by somebody else, and left alone");
        return;
    }
    if (const int error = mutedPads_.add(name))
        return logOnce(name, "is not muted, since it cannot be recorded: " + std::generic_category().message(error));
    if (const int error = attribute_.setInhibited(name, true)) {
        logOnce(name, "cannot be muted: " + std::generic_category().message(error));
        unmute(name, mutedPads_, attribute_);
    }
}

void Muter::logOnce(const std::string& name, const std::string& line) {
    if (logged_.insert(name).second) log(Severity::warning, name + " " + line);
}

}  // namespace kovra::helper
