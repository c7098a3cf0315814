#pragma once

#include <string>
#include <vector>

#include "BLE_kovra/control/Facts.h"

namespace kovra::control {

// Returns what `ble-kovractl status` prints: the answer first, then one line for each fact.
std::vector<std::string> statusText(const Facts& facts);

// The lines about single facts, which the checklist uses, too.
std::string padLine(const Facts& facts, const Pad& pad);
std::string applicationLine(const Facts& facts);
std::string serviceLine(const Facts& facts);
std::string flagLine(const Facts& facts);
std::string seatLine(const Facts& facts);
std::string hotKeyLine(const Application& application);
std::string trayLine(const Application& application);

}  // namespace kovra::control
