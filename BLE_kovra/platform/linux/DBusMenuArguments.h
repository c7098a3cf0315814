#pragma once

#include <systemd/sd-bus.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/BusMessage.h"

namespace kovra {

// What was done to a menu item.
struct MenuEvent {
    std::int32_t id = 0;
    std::string name;
};

// Each reads the next argument of a call. Negative, with the error set, where it is of another kind or longer than
// `atMost`.
int readIds(sd_bus_message* call, std::size_t atMost, std::vector<std::int32_t>& ids, sd_bus_error* error);
int readNames(sd_bus_message* call, std::size_t atMost, std::set<std::string>& names, sd_bus_error* error);
int readEvents(sd_bus_message* call, std::size_t atMost, std::vector<MenuEvent>& events, sd_bus_error* error);
// The event's own data and its time are passed over.
int readEvent(sd_bus_message* call, MenuEvent& event);

void writeIds(BusWriter& writer, const std::vector<std::int32_t>& ids);

}  // namespace kovra
