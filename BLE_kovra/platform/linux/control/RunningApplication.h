#pragma once

#include <string>

#include "BLE_kovra/control/Facts.h"

namespace kovra::control {

// Returns what the application on this user's session bus tells. The list of processes is empty.
Application askApplication();

// What has become of an action that the application was asked for.
enum class Performed {
    yes,
    notRunning,  // nobody owns its name on the session bus, or this bus cannot be reached
    refused,     // an older version, or another program that owns the name
    silent,
};
// Asks the application for the action with this name. Passes on the token that this process was started with.
Performed askForAction(const std::string& action);

}  // namespace kovra::control
