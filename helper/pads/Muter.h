#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "helper/Backoff.h"
#include "helper/Loop.h"
#include "helper/pads/InhibitedAttribute.h"
#include "helper/pads/MutedPads.h"

namespace kovra::helper {

// The part of the helper that mutes input devices, and unmutes those in the list of muted pads.
//
// A device is added to the list of muted pads before it is muted, and is not muted if that fails. A device that is
// inhibited but not in the list belongs to another program and is left alone. If a driver refuses to unmute its device,
// the muter retries with growing delays. It stops when the device is unmuted, was removed, or is to be muted again. It
// retries in the same way to mute a device whose attribute the caller may not write yet: udev may give that right a
// moment later.
class Muter {
  public:
    Muter(Loop& loop, MutedPads& mutedPads, const InhibitedAttribute& attribute)
        : loop_(loop), mutedPads_(mutedPads), attribute_(attribute) {}

    // Mutes these devices, and unmutes all others in the list.
    void muteOnly(const std::vector<std::string>& names);

    // Called when the list of muted pads gets its first entry or loses its last one.
    std::function<void(bool isAnyMuted)> onChange;

  private:
    bool unmuteOthers();
    void retryUnless(bool areOthersUnmuted);
    void reportChange();
    void mute(const std::string& name);
    void handleRefusal(const std::string& name, int count);
    void logOnce(const std::string& name, const std::string& line);

    Loop& loop_;
    MutedPads& mutedPads_;
    const InhibitedAttribute& attribute_;
    std::set<std::string> wanted_;
    std::map<std::string, int> refusals_;  // by device: how often in a row writing was not permitted
    std::set<std::string> logged_;         // the devices for which a line was logged
    bool isAnyMuted_ = false;              // as last reported
    Backoff backoff_;
    std::unique_ptr<Loop::Watch> retry_;
};

}  // namespace kovra::helper
