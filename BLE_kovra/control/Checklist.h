#pragma once

#include <string>
#include <vector>

#include "BLE_kovra/control/Facts.h"

namespace kovra::control {

// One line of `ble-kovractl doctor`, and what helps if it is not right.
struct Check {
    enum class Mark { right, wrong, unknown };
    Mark mark = Mark::right;
    std::string finding;
    std::vector<std::string> remedy = {};
};

// Returns everything that muting needs, in the order in which to mend it. Contains nothing private but the names of
// devices and accounts.
std::vector<Check> checklistOf(const Facts& facts);

// Returns what `ble-kovractl doctor` prints for these checks.
std::vector<std::string> checklistText(const std::vector<Check>& checks);

// Returns 0 if all is right, 1 if something is wrong, and otherwise 2, because something is not known.
int exitCodeOf(const std::vector<Check>& checks);

}  // namespace kovra::control
