#pragma once

#include <sys/types.h>

#include "helper/pads/InhibitedAttribute.h"

namespace kovra::helper {

// Lets this group mute the built-in touchpads that exist now, and their twins. The attributes still belong to root, so
// root can reset them without any capability. No other device is touched. A device that no longer counts as built in
// stays writable for the group, because it may be muted. Returns false if udev cannot be used, or if the right to a
// device that still exists cannot be given. Logs a line for each such device.
bool grantPads(gid_t group, const InhibitedAttribute& attribute);

}  // namespace kovra::helper
