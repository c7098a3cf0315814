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

// Where and how a window was last, so that one made again is the same window.
struct WindowPlace {
    // Of its frame's top left corner on X, in pixels; y grows downwards. Null: centred.
    std::optional<Point> position = std::nullopt;
    bool isMinimised = false;
    double scroll = 0;  // how far down the list is scrolled, in points
    bool operator==(const WindowPlace&) const = default;
};

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

// The icon goes.
struct HideTray {};

// An event: a desktop asks for the menu at this place of the screen.
struct PopUpMenu {
    int x = 0;
    int y = 0;
    std::chrono::milliseconds asked{};  // when, by the steady clock, which all processes share
    Menu menu;
};

// A state: the one window and what it shows. It comes to the front when `front` is another number than before, and
// keeps its place otherwise.
struct ShowWindow {
    std::string title;
    unsigned styleMask = 0;  // as WindowStyle has it
    Size contentSize;
    std::uint64_t front = 0;
    std::string activationToken;  // with which it may come to the front; empty where there is none
    WindowPlace place;  // for as long as the window was not to be seen; where it is seen, it is where the user has it
    // The last of the user's changes that this content knows of. What the user did later stands until it is answered.
    std::uint64_t heard = 0;
    View content;  // of its actions none crosses
};

// The window goes, as if the user had closed it, and nothing is told.
struct HideWindow {};

// A state: the alerts that are open, the topmost last. Only that one takes input. Those that are not named any more
// are closed.
struct ShowAlerts {
    struct Open {
        std::uint64_t number = 0;
        std::string activationToken;
        Alert alert;
    };
    std::vector<Open> alerts;
};

using ToWindow = std::variant<ShowTray, HideTray, PopUpMenu, ShowWindow, HideWindow, ShowAlerts>;

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

// The user changed a control: a toggle to a truth value, a picker to a tag. `path` leads to it from the root: a child's
// id, or its position where it has none.
struct ControlChanged {
    std::uint64_t number = 0;  // counts the user's changes in this process, from 1
    std::vector<std::string> path;
    std::variant<bool, std::string> value;
    bool operator==(const ControlChanged&) const = default;
};

// The user followed the link at this path.
struct LinkFollowed {
    std::vector<std::string> path;
    bool operator==(const LinkFollowed&) const = default;
};

// The window was moved, scrolled, minimised or brought back.
struct WindowPlaced {
    WindowPlace place;
    bool operator==(const WindowPlaced&) const = default;
};

// The user closed the window, which was brought to the front last with this number.
struct WindowClosed {
    std::uint64_t front = 0;
    WindowPlace place;
    bool operator==(const WindowClosed&) const = default;
};

// The user answered the alert of this number: with a button, counted from 0, or by closing it.
struct AlertAnswered {
    std::uint64_t number = 0;
    std::optional<std::size_t> button;
    bool operator==(const AlertAnswered&) const = default;
};

// The user wants the program to end.
struct QuitWanted {
    bool operator==(const QuitWanted&) const = default;
};

using ToResident = std::variant<ItemChosen, MenuClosed, ControlChanged, LinkFollowed, WindowPlaced, WindowClosed,
                                AlertAnswered, QuitWanted>;

using SendToResident = std::function<void(const ToResident& message)>;

}  // namespace kovra
