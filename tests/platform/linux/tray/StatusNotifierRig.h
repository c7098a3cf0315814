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

// A status item on a private session bus. The test starts the panel.
struct StatusNotifierRig {
    StatusNotifierRig() : StatusNotifierRig("XFCE") {}
    explicit StatusNotifierRig(const std::string& desktop) { environment.set("XDG_CURRENT_DESKTOP", desktop); }

    Environment environment;
    PrivateBus daemon{"DBUS_SESSION_BUS_ADDRESS"};
    SdEventLoop loop;
    SessionBus bus{loop};
    StatusNotifierWatcher watcher{bus};
    PanelLook look{IconLook::recolored};
    ActivationToken token;
    std::vector<std::pair<int, int>> requests;  // positions where the menu was requested
    StatusNotifierItem::PopUp popUp = [this](int x, int y) { requests.emplace_back(x, y); };
    TrayStatusBar bar{loop, {[this](TrayItem& made) {
                          return std::make_unique<StatusNotifierFront>(made, bus, watcher, look, token, "/folder/icons",
                                                                       popUp);
                      }}};
    std::unique_ptr<StatusItem> item = bar.statusItem(StatusBar::variableLength);
    std::optional<Panel> panel;
    std::string done;  // the menu items whose actions ran

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
    std::string program() const {
        const char* name = nullptr;
        EXPECT_GE(sd_bus_get_unique_name(bus.bus(), &name), 0);
        return name;
    }
    std::string takeDone() {
        settle();
        return std::exchange(done, {});
    }
    // Runs the queue until all queued blocks, and the blocks that they queue, have run.
    void settle() {
        for (int turns = 0; turns < 10; ++turns) {
            bool turned = false;
            loop.async([&] { turned = true; });
            loop.runUntil([&] { return turned; });
        }
    }
};

}  // namespace kovra
