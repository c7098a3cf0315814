#pragma once

#include <sys/types.h>

#include "helper/pads/InhibitedAttribute.h"

namespace kovra::helper {

// Lets this group mute the built-in touchpads that exist now, and their twins. The attributes stay root's, so root can
// unmute them without any capability. No other device is touched. A device that no longer counts as built in stays
// writable for the group, because it may be muted. Returns false, and logs a line for each device, if that fails.
bool grantPads(gid_t group, const InhibitedAttribute& attribute);

}  // namespace kovra::helper
