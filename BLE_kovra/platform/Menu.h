#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kovra {

enum class MenuItemState { off = 0, on = 1 };

// What choosing an item does. `perform` is never empty where there is a name.
struct MenuAction {
    std::string name;
    std::function<void()> perform;
};

struct MenuItem {
    static MenuItem separator() {
        MenuItem item;
        item.isSeparator = true;
        return item;
    }

    std::string title;  // shown as it is: no character in it marks a mnemonic
    std::optional<MenuAction> action;
    std::string keyEquivalent;           // one character, with the desktop's command key (Ctrl); empty for none
    int tag = 0;                         // how an item is found again; 0 for none
    std::optional<MenuItemState> state;  // set for an item that can carry a check mark
    bool isEnabled = true;
    bool isSeparator = false;
};

// From top to bottom.
struct Menu {
    // The first item with this tag; null where there is none.
    MenuItem* itemWithTag(int tag) {
        for (MenuItem& item : items) {
            if (item.tag == tag) return &item;
        }
        return nullptr;
    }

    std::vector<MenuItem> items;
};

}  // namespace kovra
