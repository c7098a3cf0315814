#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kovra {

enum class MenuItemState { off = 0, on = 1 };

// The action of a menu item. `perform` is never empty if there is a name.
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

    std::string title;  // shown literally, without mnemonics
    std::optional<MenuAction> action;
    std::string keyEquivalent;           // one character, pressed with Ctrl (Command on macOS); empty for none
    int tag = 0;                         // identifies the item; 0 for none
    std::optional<MenuItemState> state;  // set for an item with a check mark
    bool isEnabled = true;
    bool isSeparator = false;
};

// A menu, with its items from top to bottom.
struct Menu {
    // Returns the first item with this tag, or null.
    MenuItem* itemWithTag(int tag) {
        for (MenuItem& item : items) {
            if (item.tag == tag) return &item;
        }
        return nullptr;
    }

    std::vector<MenuItem> items;
};

}  // namespace kovra
