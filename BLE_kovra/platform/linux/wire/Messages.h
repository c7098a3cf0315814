#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <variant>

#include "BLE_kovra/platform/Drawing.h"
#include "BLE_kovra/platform/Menu.h"

namespace kovra {

// What the resident program tells its window process: states, which hold until another of the kind is told, and events,
// which are told once. The newest of its kind is all that counts.

// A state: the icon in the tray and its menu, from now on as given. Of an item's action the name crosses alone; the tag
// stays.
struct ShowTray {
    std::optional<Drawing> image;
    bool imageIsTemplate = false;
    std::string toolTip;
    Menu menu;
};

// An event: a desktop asks for the menu at this place of the screen.
struct PopUpMenu {
    int x = 0;
    int y = 0;
    std::chrono::milliseconds asked{};  // when, by the steady clock, which all processes share
    Menu menu;
};

using ToWindow = std::variant<ShowTray, PopUpMenu>;

// What the window process tells the resident program: what the user did. Each of them counts.

// The user chose this item of the menu of the icon in the tray, counted from 0 with the separator.
struct ItemChosen {
    std::size_t position = 0;
    bool operator==(const ItemChosen&) const = default;
};

// The menu that a desktop asked for is closed, or was not opened at all.
struct MenuClosed {
    std::chrono::milliseconds asked{};  // as the newest request has it
    std::optional<std::size_t> chosen;  // the item, counted as above
    bool operator==(const MenuClosed&) const = default;
};

using ToResident = std::variant<ItemChosen, MenuClosed>;

}  // namespace kovra
