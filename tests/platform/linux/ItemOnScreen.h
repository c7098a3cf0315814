#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/TrayItem.h"
#include "BLE_kovra/platform/linux/WindowProcess.h"
#include "BLE_kovra/platform/linux/XConnection.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/platform/linux/Onlooker.h"
#include "tests/platform/linux/VirtualScreen.h"
#include "tests/support/Environment.h"

namespace kovra {

// The item as the application makes it, with a small menu, and the real window process on a real screen. Without a
// window it is kept for a moment alone.
class ItemOnScreen : public testing::Test {
  protected:
    static constexpr std::chrono::seconds limit{30};
    static constexpr std::chrono::milliseconds linger{300};
    static constexpr int toggleTag = 1;

    ItemOnScreen() {
        environment.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
        environment.unset({"WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_SCALE_FACTOR"});
        Menu menu;
        add(menu, "Toggle", "toggle", toggleTag);
        menu.items.emplace_back().title = "Hint";
        menu.items.back().isEnabled = false;
        menu.items.push_back(MenuItem::separator());
        add(menu, "Quit", "quit", 0);
        item.setMenu(menu);
    }
    ~ItemOnScreen() override {
        window.hideTray();
        waitUntil([] { return windowProcesses().empty(); });
    }

    void add(Menu& menu, const std::string& title, const std::string& name, int tag) {
        MenuItem& added = menu.items.emplace_back();
        added.title = title;
        added.action = MenuAction{name, [this, name] { done.push_back(name); }};
        added.tag = tag;
        if (tag != 0) added.state = MenuItemState::on;
    }
    template <typename T>
    T waitFor(const std::function<std::optional<T>()>& look) {
        const auto end = std::chrono::steady_clock::now() + limit;
        for (;;) {
            if (const std::optional<T> seen = look()) return *seen;
            if (std::chrono::steady_clock::now() > end) break;
            let(std::chrono::milliseconds(10));
        }
        ADD_FAILURE() << "waited in vain";
        return T();
    }
    void waitUntil(const std::function<bool()>& condition) {
        waitFor<bool>([&] { return condition() ? std::optional(true) : std::nullopt; });
    }
    void let(std::chrono::milliseconds duration) {
        bool isOver = false;
        loop.asyncAfter(duration, [&] { isOver = true; });
        loop.runUntil([&] { return isOver; });
    }

    // Which has no title of its own.
    std::optional<Onlooker::Place> menu() { return onlooker.window("BLE-kovra"); }
    Onlooker::Place openedMenu() {
        return waitFor<Onlooker::Place>([&] { return menu(); });
    }
    // Our children of that name.
    static std::vector<pid_t> windowProcesses() {
        std::vector<pid_t> found;
        std::ifstream children("/proc/thread-self/children");
        for (pid_t child = 0; children >> child;) {
            std::string name;
            std::ifstream("/proc/" + std::to_string(child) + "/comm") >> name;
            if (name == "ble-kovra-ui") found.push_back(child);
        }
        return found;
    }

    Environment environment;
    VirtualScreen screen{"640x480x24"};
    SdEventLoop loop;
    FakeMainQueue patience;  // for what waits
    std::unique_ptr<XConnection> x = XConnection::open(loop);
    WindowProcess window{loop, windowProgram,
                         WindowProcess::Patience{
                             {std::chrono::milliseconds(10), std::chrono::milliseconds(100), std::chrono::seconds(1)},
                             std::chrono::minutes(1),
                             std::chrono::milliseconds(300)}};
    TrayItem item{loop};
    Onlooker onlooker;
    std::vector<std::string> done;
};

}  // namespace kovra
