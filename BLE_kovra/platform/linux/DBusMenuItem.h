#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/Menu.h"
#include "BLE_kovra/platform/linux/BusMessage.h"

namespace kovra {

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

}  // namespace kovra
