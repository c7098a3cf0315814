#pragma once

#include <systemd/sd-bus.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/Menu.h"
#include "BLE_kovra/platform/linux/bus/BusMessage.h"

namespace kovra {

// The types of com.canonical.dbusmenu, and functions that write the properties of items and read the arguments of
// calls.

// The keys of a shortcut: the modifiers, then the key, with the names that panels use.
using DBusMenuShortcut = std::vector<std::string>;

// The name and the value of a menu item's property in com.canonical.dbusmenu.
struct DBusMenuProperty {
    std::string name;
    std::variant<bool, std::int32_t, std::string, DBusMenuShortcut> value;
    bool operator==(const DBusMenuProperty&) const = default;
};
using DBusMenuProperties = std::vector<DBusMenuProperty>;

// Returns the item's properties that differ from the defaults of the interface.
DBusMenuProperties dbusMenuProperties(const MenuItem& item);
// Returns the properties of the menu itself, which is the root of all items.
DBusMenuProperties dbusMenuRootProperties();
// Returns the values that the interface assumes for properties that an item does not have.
const DBusMenuProperties& dbusMenuDefaults();
// Returns only the state of the check mark, or no property for an item without a check mark.
DBusMenuProperties dbusMenuState(const MenuItem& item);

// Writes the property as a variant.
void write(BusWriter& writer, const DBusMenuProperty& property);
// Writes the properties with the given names as a{sv}; an empty set of names means all properties.
void write(BusWriter& writer, const DBusMenuProperties& properties, const std::set<std::string>& names);

// An event that the desktop reports for a menu item.
struct MenuEvent {
    std::int32_t id = 0;
    std::string name;
};

// Each function reads the next argument of a call. It returns a negative number if the argument has another type or is
// longer than `atMost`. In the second case it also sets the error.
int readIds(sd_bus_message* call, std::size_t atMost, std::vector<std::int32_t>& ids, sd_bus_error* error);
int readNames(sd_bus_message* call, std::size_t atMost, std::set<std::string>& names, sd_bus_error* error);
int readEvents(sd_bus_message* call, std::size_t atMost, std::vector<MenuEvent>& events, sd_bus_error* error);
// Reads the next event. Ignores its data and its timestamp.
int readEvent(sd_bus_message* call, MenuEvent& event);

void writeIds(BusWriter& writer, const std::vector<std::int32_t>& ids);

}  // namespace kovra
