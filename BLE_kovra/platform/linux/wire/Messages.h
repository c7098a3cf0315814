#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/Alert.h"
#include "BLE_kovra/platform/Drawing.h"
#include "BLE_kovra/platform/Menu.h"
#include "BLE_kovra/platform/View.h"

namespace kovra {

// The last position and state of a window, which a new window process restores.
struct WindowPlace {
    // The top left corner of the frame on X, in pixels; the y axis points down. Null means centered.
    std::optional<Point> position = std::nullopt;
    bool isMinimised = false;
    double scroll = 0;  // scroll offset of the list, in points
    bool operator==(const WindowPlace&) const = default;
};

// Messages from the resident program to its window process. A state is valid until the next message of its kind. An
// event is sent once. A newer message replaces an unsent older one of the same kind.

// A state: the icon in the tray and its menu. Only the names of actions are sent, no tags.
struct ShowTray {
    std::optional<Drawing> image;
    bool imageIsTemplate = false;
    std::string toolTip;
    Menu menu;
    // The color of a template image, and of the line around it if it has one: red, green and blue as 0xRRGGBB.
    std::uint32_t ink = 0;
    std::optional<std::uint32_t> outline = std::nullopt;
};

// Removes the tray icon.
struct HideTray {};

// An event: the desktop requests the menu at this position on the screen.
struct PopUpMenu {
    int x = 0;
    int y = 0;
    std::chrono::milliseconds asked{};  // time of the request, by the steady clock, which all processes share
    Menu menu;
};

// A state: the settings window and its content. The window comes to the front when `front` changes.
struct ShowWindow {
    std::string title;
    unsigned styleMask = 0;  // flags of WindowStyle
    Size contentSize;
    std::uint64_t front = 0;
    std::string activationToken = {};  // permits the window to come to the front; may be empty
    WindowPlace place = {};            // for a window that was not visible before
    // The content includes the user's changes up to this number. The window keeps later changes until a message
    // acknowledges them.
    std::uint64_t acknowledged = 0;
    View content = {};  // without actions
};

// Hides the window. The window process does not send WindowClosed for it.
struct HideWindow {};

// A state: the open alerts, the topmost last. Only the topmost accepts input. Alerts that are no longer listed close.
// The topmost comes to the front when it opens, and when `front` changes.
struct ShowAlerts {
    struct Open {
        std::uint64_t number = 0;
        std::string activationToken;
        Alert alert;
    };
    std::vector<Open> alerts;
    std::optional<std::uint64_t> front = std::nullopt;
};

// An event: requests a Pong. It is sent after each state and each other event, so that the Pong also shows that the
// window process has read them.
struct Ping {
    std::uint64_t number = 0;
};

using ToWindow = std::variant<ShowTray, HideTray, PopUpMenu, ShowWindow, HideWindow, ShowAlerts, Ping>;

// Messages from the window process to the resident program: the user's actions, and the Pong. No message replaces
// another one.

// The user chose an item of the tray icon's menu. Positions count from 0 and include separators.
struct ItemChosen {
    std::size_t position = 0;
    bool operator==(const ItemChosen&) const = default;
};

// The requested menu closed or did not open.
struct MenuClosed {
    std::chrono::milliseconds asked{};  // time of the newest request
    std::optional<std::size_t> chosen;  // position of the chosen item
    bool operator==(const MenuClosed&) const = default;
};

// The user changed a toggle to a boolean or a picker to a tag. The path from the root consists of the ids of the
// children, or of their positions where they have no id.
struct ControlChanged {
    std::uint64_t number = 0;  // counts the user's changes in the window process from 1
    std::vector<std::string> path;
    std::variant<bool, std::string> value;
    bool operator==(const ControlChanged&) const = default;
};

// The user followed the link at this path.
struct LinkFollowed {
    std::vector<std::string> path;
    bool operator==(const LinkFollowed&) const = default;
};

// The window was moved, scrolled, minimized or restored.
struct WindowPlaced {
    WindowPlace place;
    bool operator==(const WindowPlaced&) const = default;
};

// The user closed the window. `front` is the value of the last ShowWindow that the window process has received.
struct WindowClosed {
    std::uint64_t front = 0;
    WindowPlace place;
    bool operator==(const WindowClosed&) const = default;
};

// The user answered the alert that has this number: pressed a button (counted from 0), or closed it.
struct AlertAnswered {
    std::uint64_t number = 0;
    std::optional<std::size_t> button;
    bool operator==(const AlertAnswered&) const = default;
};

// The user requested to quit the program.
struct QuitWanted {
    bool operator==(const QuitWanted&) const = default;
};

// The user requested the settings window.
struct SettingsWanted {
    bool operator==(const SettingsWanted&) const = default;
};

// Replies to the Ping with this number.
struct Pong {
    std::uint64_t number = 0;
    bool operator==(const Pong&) const = default;
};

using ToResident = std::variant<ItemChosen, MenuClosed, ControlChanged, LinkFollowed, WindowPlaced, WindowClosed,
                                AlertAnswered, QuitWanted, SettingsWanted, Pong>;

using SendToResident = std::function<void(const ToResident& message)>;

}  // namespace kovra
