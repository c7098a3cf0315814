#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/tray/StatusNotifierFront.h"
#include "BLE_kovra/platform/linux/tray/TrayStatusBar.h"
#include "tests/platform/linux/tray/Panel.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {

// A desktop with a session bus of its own, and a status item on it; its panel comes when the test says so.
struct StatusNotifierRig {
    StatusNotifierRig() : StatusNotifierRig("XFCE") {}
    explicit StatusNotifierRig(const std::string& desktop) { environment.set("XDG_CURRENT_DESKTOP", desktop); }

    Environment environment;
    PrivateBus daemon{"DBUS_SESSION_BUS_ADDRESS"};
    SdEventLoop loop;
    SessionBus bus{loop};
    StatusNotifierWatcher watcher{bus};
    ActivationToken token;
    std::vector<std::pair<int, int>> asked;  // where the menu was asked for
    StatusNotifierItem::PopUp popUp = [this](int x, int y) { asked.emplace_back(x, y); };
    TrayStatusBar bar{loop, {[this](TrayItem& made) {
                          return std::make_unique<StatusNotifierFront>(made, bus, watcher, token, "/folder/icons",
                                                                       popUp);
                      }}};
    std::unique_ptr<StatusItem> item = bar.statusItem(StatusBar::variableLength);
    std::optional<Panel> panel;
    std::string done;  // what was chosen

    // The item in a panel that is there from the start, with a menu of each kind of entry.
    void showInPanel() {
        panel.emplace(loop);
        item->setMenu(menu());
        showIcon("plain", "off");
        EXPECT_TRUE(panel->findsItem());
        panel->signals();
    }
    void showIcon(const std::string& name, const std::string& toolTip) {
        item->button()->setImage({.name = name, .size = {18, 18}, .strokes = {}});
        item->button()->setImageIsTemplate(true);
        item->button()->setToolTip(toolTip);
    }
    Menu menu() {
        MenuItem hint;
        hint.title = "a_hint & <b>";
        hint.isEnabled = false;
        return {{mark("Mute", 1, MenuItemState::on), hint, entry("Settings", ","), MenuItem::separator(),
                 entry("Quit", "q")}};
    }
    MenuItem entry(const std::string& title, const std::string& key = "") {
        MenuItem entry;
        entry.title = title;
        entry.action = MenuAction{title, [this, title] { done += title + "; "; }};
        entry.keyEquivalent = key;
        return entry;
    }
    MenuItem mark(const std::string& title, int tag, MenuItemState state) {
        MenuItem mark = entry(title);
        mark.tag = tag;
        mark.state = state;
        return mark;
    }
    // What was done since the last call, once all that was asked has been done.
    std::string news() {
        settle();
        return std::exchange(done, {});
    }
    // Turns the queue until what is queued, and what that queues, has had its turn.
    void settle() {
        for (int turns = 0; turns < 10; ++turns) {
            bool turned = false;
            loop.async([&] { turned = true; });
            loop.runUntil([&] { return turned; });
        }
    }
};

}  // namespace kovra
