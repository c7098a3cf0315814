#pragma once

#include <memory>
#include <string>

#include "BLE_kovra/platform/Drawing.h"
#include "BLE_kovra/platform/Menu.h"

namespace kovra {

// The part of a status item that shows an image.
class StatusBarButton {
  public:
    virtual ~StatusBarButton() = default;
    virtual void setImage(const Drawing& image) = 0;
    virtual bool hasImage() const = 0;
    // A template image is drawn in the bar's own color; its black parts are only a mask. setImage() resets this
    // property.
    virtual void setImageIsTemplate(bool isTemplate) = 0;
    // The description of the image, for the tool tip and for screen readers.
    virtual void setToolTip(const std::string& text) = 0;
};

// The program's item in the desktop's bar. It shows the last image, tool tip and menu whenever there is a bar; a
// missing bar is not an error. A bar in another process receives only what has changed.
class StatusItem {
  public:
    virtual ~StatusItem() = default;

    // Returns null if the item has no button.
    virtual StatusBarButton* button() = 0;

    // A click on the item opens the menu. Choosing an enabled item performs its action from the event loop. Some bars
    // toggle the check mark of the chosen item by themselves. After the action, the bar shows the check marks again as
    // setMenu() and setState() have set them.
    virtual void setMenu(Menu menu) = 0;
    // Sets the check mark of a menu item. Does nothing without a menu or an item with this tag.
    virtual void setState(int tag, MenuItemState state) = 0;

    // Shows the text to the user for a moment if no bar shows the item. Does nothing on systems that always have a bar.
    virtual void announce(const std::string& /*text*/) {}
};

// The desktop's bar of status items: a menu bar or tray.
class StatusBar {
  public:
    static constexpr double variableLength = -1;  // the item is as wide as its icon

    virtual ~StatusBar() = default;
    // The item stays in the bar until it is destroyed.
    virtual std::unique_ptr<StatusItem> statusItem(double length) = 0;

    // Returns the key of the text that tells the user how to get a bar, if there is none and the user can get one.
    // Returns an empty text otherwise.
    virtual std::string advice() const { return {}; }
};

}  // namespace kovra
