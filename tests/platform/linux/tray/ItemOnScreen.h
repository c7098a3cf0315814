#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/tray/TrayItem.h"
#include "BLE_kovra/platform/linux/x11/XConnection.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/platform/linux/windows/WindowProcessOnScreen.h"

namespace kovra {

// The item as the application makes it, with a small menu, beside the real window process on a real screen.
class ItemOnScreen : public WindowProcessOnScreen {
  protected:
    static constexpr int toggleTag = 1;

    ItemOnScreen() {
        Menu menu;
        add(menu, "Toggle", "toggle", toggleTag);
        menu.items.emplace_back().title = "Hint";
        menu.items.back().isEnabled = false;
        menu.items.push_back(MenuItem::separator());
        add(menu, "Quit", "quit", 0);
        item.setMenu(menu);
    }

    void add(Menu& menu, const std::string& title, const std::string& name, int tag) {
        MenuItem& added = menu.items.emplace_back();
        added.title = title;
        added.action = MenuAction{name, [this, name] { done.push_back(name); }};
        added.tag = tag;
        if (tag != 0) added.state = MenuItemState::on;
    }

    // Which has no title of its own.
    std::optional<Onlooker::Place> menu() { return onlooker.window("BLE-kovra"); }
    Onlooker::Place openedMenu() {
        return waitFor<Onlooker::Place>([&] { return menu(); });
    }

    FakeMainQueue patience;  // for what waits
    std::unique_ptr<XConnection> x = XConnection::open(loop);
    TrayItem item{loop};
    std::vector<std::string> done;
};

}  // namespace kovra
