#include "helper/pads/Grant.h"

#include <libudev.h>

#include <string>

#include "helper/Handles.h"
#include "helper/Log.h"
#include "helper/pads/InputDevices.h"
#include "helper/pads/PadRules.h"

namespace kovra::helper {

bool grantPads(gid_t group, const InhibitedAttribute& attribute) {
    const Handle<udev, udev_unref> context(udev_new());
    if (!context) return false;
    bool areAllGranted = true;
    for (const std::string& name : inputsToMute(inputDevices(context.get()))) {
        const int error = attribute.giveTo(name, group);
        if (error == 0 || attribute.meansGone(error)) continue;
        logError(name + " cannot be given to group " + std::to_string(group), error);
        areAllGranted = false;
    }
    return areAllGranted;
}

}  // namespace kovra::helper
