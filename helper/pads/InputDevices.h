#pragma once

#include <libudev.h>

#include <vector>

#include "helper/pads/PadRules.h"

namespace kovra::helper {

// Returns the properties of all touchpads and mice that have an event node, as sysfs and the database of udev have them
// now. Sets `error` to an error number if some cannot be read, and to 0 otherwise. A device that was removed meanwhile
// is no error.
std::vector<InputProperties> inputDevices(udev* context, int& error);

}  // namespace kovra::helper
