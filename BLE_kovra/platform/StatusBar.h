#pragma once

#include <memory>
#include <string>

#include "BLE_kovra/platform/Drawing.h"
#include "BLE_kovra/platform/Menu.h"

namespace kovra {

// The part of a status item that shows a picture.
class StatusBarButton {
  public:
    virtual ~StatusBarButton() = default;
    virtual void setImage(const Drawing& image) = 0;
    virtual bool hasImage() const = 0;
    // A template image is painted in the bar's own colour, light or dark: its black is only a mask. Setting an image
    // takes this back.
    virtual void setImageIsTemplate(bool isTemplate) = 0;
    // What the picture says, for screen readers and for who rests the pointer on it.
    virtual void setToolTip(const std::string& text) = 0;
};

// One program's place in the desktop's bar. It shows what it was given last, as soon as and whenever there is a bar;
// with no bar at all the program notices nothing. What is already shown is not sent again.
class StatusItem {
  public:
    virtual ~StatusItem() = default;

    // Null where the item has none.
    virtual StatusBarButton* button() = 0;

    // A click on the item opens the menu; choosing an enabled item performs its action, from the event loop. After a
    // choice the bar is told again what is checked, since bars flip check marks by themselves.
    virtual void setMenu(Menu menu) = 0;
    // The item's check mark. Does nothing without a menu, or without an item of that tag.
    virtual void setState(int tag, MenuItemState state) = 0;
};

// The desktop's bar of status items: a menu bar or tray.
class StatusBar {
  public:
    static constexpr double variableLength = -1;  // as wide as its icon

    virtual ~StatusBar() = default;
    // The item stays in the bar for as long as it lives.
    virtual std::unique_ptr<StatusItem> statusItem(double length) = 0;
};

}  // namespace kovra
