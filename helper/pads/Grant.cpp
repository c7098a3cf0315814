#include "helper/pads/Grant.h"

#include <libudev.h>

#include <string>
#include <vector>

#include "helper/Handles.h"
#include "helper/Log.h"
#include "helper/pads/InputDevices.h"
#include "helper/pads/PadRules.h"

namespace kovra::helper {

bool grantPads(gid_t group, const InhibitedAttribute& attribute) {
    const Handle<udev, udev_unref> context(udev_new());
    if (!context) return false;
    int failure = 0;
    const std::vector<InputProperties> devices = inputDevices(context.get(), failure);
    if (failure != 0) logError("the touchpads cannot be listed", failure);
    bool areAllGranted = failure == 0;
    for (const std::string& name : inputsToMute(devices)) {
        const int error = attribute.giveTo(name, group);
        if (error == 0 || attribute.meansGone(error)) continue;
        logError(name + " cannot be given to group " + std::to_string(group), error);
        areAllGranted = false;
    }
    return areAllGranted;
}

}  // namespace kovra::helper
