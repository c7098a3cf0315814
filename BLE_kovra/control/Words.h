#pragma once

#include <string>
#include <vector>

#include "BLE_kovra/control/Facts.h"

namespace kovra::control {

// Returns "a", "a and b" or "a, b and c".
std::string enumerated(const std::vector<std::string>& items);

// Returns the built-in trackpads.
std::vector<const Pad*> builtInPads(const Facts& facts);

// Returns whether the application that answered is the one whose decision counts: that of the person who may write the
// flag.
bool isApplicationInCharge(const Facts& facts);

// Returns the process of the application of this person, or null.
const Process* processOf(const Facts& facts, const Person& person);

// Returns why the application of the person who asks cannot be asked, as a clause such as "it does not answer".
std::string reasonOfSilence(const Facts& facts);

bool isServiceAway(const Service& service);

}  // namespace kovra::control
