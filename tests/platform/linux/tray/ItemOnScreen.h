#pragma once

#include <xcb/xcb.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/loop/Handles.h"
#include "BLE_kovra/platform/linux/tray/TrayItem.h"
#include "BLE_kovra/platform/linux/x11/XConnection.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/platform/linux/windows/WindowProcessOnScreen.h"

namespace kovra {

// An item with a small menu, together with the real window process on an X server (Xvfb).
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
        menu.items.back().keyEquivalent = "q";
        item.setMenu(menu);
    }

    void add(Menu& menu, const std::string& title, const std::string& name, int tag) {
        MenuItem& added = menu.items.emplace_back();
        added.title = title;
        added.action = MenuAction{name, [this, name] { done.push_back(name); }};
        added.tag = tag;
        if (tag != 0) added.state = MenuItemState::on;
    }

    // Returns the rectangle of the menu if it is visible. Its window has no title of its own, so it has the name of the
    // application.
    std::optional<Onlooker::Place> menu() { return onlooker.window("BLE-kovra"); }
    // Waits until the menu is open and receives all input, and returns its rectangle. The toolkit grabs the keyboard
    // and the pointer only after it has mapped the window; input before that is lost.
    Onlooker::Place openedMenu() {
        waitUntil([&] { return menu() && isInputGrabbed(); });
        return menu().value_or(Onlooker::Place());
    }

    FakeMainQueue fakeQueue;
    std::unique_ptr<XConnection> x = XConnection::open(loop);
    TrayItem item{loop};
    std::vector<std::string> done;

  private:
    // Returns whether the menu has grabbed the keyboard and the pointer, because an attempt to grab them then fails.
    // The attempt grabs the server first, so that it cannot disturb the menu's own grab.
    bool isInputGrabbed() {
        xcb_connection_t* connection = x->get();
        const xcb_window_t root = x->roots().front();
        xcb_grab_server(connection);
        const auto keyboard =
            xcb_grab_keyboard(connection, 0, root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        const auto pointer = xcb_grab_pointer(connection, 0, root, 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                                              XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
        xcb_ungrab_keyboard(connection, XCB_CURRENT_TIME);
        xcb_ungrab_pointer(connection, XCB_CURRENT_TIME);
        xcb_ungrab_server(connection);
        const Allocated<xcb_grab_keyboard_reply_t> keys(xcb_grab_keyboard_reply(connection, keyboard, nullptr));
        const Allocated<xcb_grab_pointer_reply_t> clicks(xcb_grab_pointer_reply(connection, pointer, nullptr));
        return keys && keys->status == XCB_GRAB_STATUS_ALREADY_GRABBED && clicks &&
               clicks->status == XCB_GRAB_STATUS_ALREADY_GRABBED;
    }
};

}  // namespace kovra
