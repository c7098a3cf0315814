#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <variant>

#include "BLE_kovra/platform/Drawing.h"
#include "BLE_kovra/platform/Menu.h"

namespace kovra {

// What the resident program tells its window process. Each is a whole state: the newest of its kind is all that counts.

// The icon in the tray and its menu, from now on as given. Of an item's action the name crosses alone; the tag stays.
struct ShowTray {
    std::optional<Drawing> image;
    bool imageIsTemplate = false;
    std::string toolTip;
    Menu menu;
};

using ToWindow = std::variant<ShowTray>;

// What the window process tells the resident program: what the user did. Each of them counts.

// The user chose this item of the tray's menu, counted from 0 with the separator.
struct ItemChosen {
    std::size_t position = 0;
    bool operator==(const ItemChosen&) const = default;
};

using ToResident = std::variant<ItemChosen>;

}  // namespace kovra
