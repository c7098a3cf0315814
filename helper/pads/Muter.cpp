#include "helper/pads/Muter.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "helper/Log.h"
#include "helper/pads/Unmute.h"

namespace kovra::helper {

namespace {

// While udev's rule is still being applied, the helper may not write the attribute of a device. So a line is logged
// only after more refusals than this. With the delays between the retries, that takes three seconds.
constexpr int patientRefusals = 6;

}  // namespace

void Muter::muteOnly(const std::vector<std::string>& names) {
    wanted_ = {names.begin(), names.end()};
    const auto isUnwanted = [this](const std::string& name) { return !wanted_.contains(name); };
    std::erase_if(logged_, isUnwanted);
    std::erase_if(refusals_, [&](const auto& refusal) { return isUnwanted(refusal.first); });
    backoff_.reset();
    const bool areOthersUnmuted = unmuteOthers();
    for (const std::string& name : wanted_) mute(name);
    retryUnless(areOthersUnmuted);
}

bool Muter::unmuteOthers() {
    bool areAllUnmuted = true;
    const std::set<std::string> listed = mutedPads_.names();
    for (const std::string& name : listed) {
        if (!wanted_.contains(name) && !unmute(name, mutedPads_, attribute_)) areAllUnmuted = false;
    }
    return areAllUnmuted;
}

void Muter::retryUnless(bool areOthersUnmuted) {
    reportChange();
    retry_.reset();
    if (areOthersUnmuted && refusals_.empty()) return;
    retry_ = loop_.after(backoff_.nextDelay(), [this] {
        const std::map<std::string, int> refused = refusals_;
        const bool areUnmuted = unmuteOthers();
        for (const auto& [name, count] : refused) mute(name);
        retryUnless(areUnmuted);
    });
}

void Muter::reportChange() {
    const bool isAnyMuted = !mutedPads_.names().empty();
    if (std::exchange(isAnyMuted_, isAnyMuted) != isAnyMuted && onChange) onChange(isAnyMuted);
}

void Muter::mute(const std::string& name) {
    const auto earlier = refusals_.extract(name);
    const std::optional<bool> isInhibited = attribute_.isInhibited(name);
    if (!isInhibited) return logOnce(name, "cannot be muted: it was removed, or the kernel cannot inhibit it");
    if (*isInhibited) {
        if (!mutedPads_.names().contains(name)) logOnce(name, "is inhibited by somebody else, and left alone");
        return;
    }
    if (const int error = mutedPads_.add(name))
        return logOnce(name, "is not muted, since it cannot be recorded: " + std::generic_category().message(error));
    const int error = attribute_.setInhibited(name, true);
    if (error != 0) unmute(name, mutedPads_, attribute_);
    if (error == EACCES) return handleRefusal(name, earlier ? earlier.mapped() + 1 : 1);
    if (error != 0) logOnce(name, "cannot be muted: " + std::generic_category().message(error));
}

void Muter::handleRefusal(const std::string& name, int count) {
    refusals_[name] = count;
    if (count > patientRefusals) logOnce(name, "cannot be muted: udev has not given it to the helper");
}

void Muter::logOnce(const std::string& name, const std::string& line) {
    if (logged_.insert(name).second) log(Severity::warning, name + " " + line);
}

}  // namespace kovra::helper
