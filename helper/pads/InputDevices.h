#pragma once

#include <libudev.h>

#include <vector>

#include "helper/pads/PadRules.h"

namespace kovra::helper {

// Returns the properties of all touchpads and mice that have an event node, as sysfs and the database of udev have them
// now.
std::vector<InputProperties> inputDevices(udev* context);

}  // namespace kovra::helper
