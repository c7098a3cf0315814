#pragma once

#include <string>
#include <vector>

#include "BLE_kovra/control/Facts.h"

namespace kovra::control {

// Where the kernel's attributes and the service's records are.
struct PadPlaces {
    std::string inputs = "/sys/class/input";
    std::string records = "/run/ble-kovra-helper/pads";
    std::string group = "_ble-kovra-helper";  // the service mutes as a member of this group
};

// Sets `pads` to the touchpads and their twins, built-in ones first, by the service's own rules (helper/pads). Sets
// `error` if udev cannot be asked.
void readPads(std::vector<Pad>& pads, std::string& error, const PadPlaces& places = {});

}  // namespace kovra::control
