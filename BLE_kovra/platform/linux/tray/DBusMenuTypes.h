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

// The types of com.canonical.dbusmenu: how an item's properties are written, and how the arguments of its calls are
// read.

// The keys of a shortcut: modifiers, then the key by the name that the desktop's panels know.
using DBusMenuShortcut = std::vector<std::string>;

// A property of a menu item as com.canonical.dbusmenu has it.
struct DBusMenuProperty {
    std::string name;
    std::variant<bool, std::int32_t, std::string, DBusMenuShortcut> value;
    bool operator==(const DBusMenuProperty&) const = default;
};
using DBusMenuProperties = std::vector<DBusMenuProperty>;

// Those that differ from what the interface takes for granted.
DBusMenuProperties dbusMenuProperties(const MenuItem& item);
// Of the menu itself, the root of all items.
DBusMenuProperties dbusMenuRootProperties();
// What the interface takes for granted, where an item says nothing else.
const DBusMenuProperties& dbusMenuDefaults();
// The check mark alone; empty for an item without one.
DBusMenuProperties dbusMenuState(const MenuItem& item);

// As a variant.
void write(BusWriter& writer, const DBusMenuProperty& property);
// As a{sv}, those of the given names; all of them where no name is given.
void write(BusWriter& writer, const DBusMenuProperties& properties, const std::set<std::string>& names);

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
