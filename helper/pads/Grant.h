#pragma once

#include <sys/types.h>

#include "helper/pads/InhibitedAttribute.h"

namespace kovra::helper {

// Lets this user mute the built-in touchpads that exist now, and their twins: makes the user the owner of their
// attributes. No other device is touched. A device that no longer counts as built in keeps its owner, because it may be
// muted. Returns false, and logs a line for each device, if that fails.
bool grantPads(uid_t user, const InhibitedAttribute& attribute);

}  // namespace kovra::helper
