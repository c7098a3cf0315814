#pragma once

#include <chrono>
#include <string>

#include "helper/pads/InhibitedAttribute.h"
#include "helper/pads/MutedPads.h"

namespace kovra::helper {

// Unmutes the device and removes it from the list. Returns true also if the device does not exist any more. If the
// attribute cannot be written, for example because the driver refuses, it logs one line, keeps the device in the list
// and returns false.
bool unmute(const std::string& name, MutedPads& mutedPads, const InhibitedAttribute& attribute);

// Unmutes all devices of the list, and retries until the timeout. Returns whether all were unmuted.
bool unmuteAll(MutedPads& mutedPads, const InhibitedAttribute& attribute, std::chrono::milliseconds timeout);

}  // namespace kovra::helper
