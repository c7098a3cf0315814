#pragma once

#include <cstddef>
#include <functional>
#include <utility>

#include "BLE_kovra/platform/Menu.h"
#include "BLE_kovra/platform/linux/ui/tray/MenuWidget.h"

namespace kovra {

// The status item's menu. It shows texts literally. When the user chooses an item, its check mark does not change; only
// show() changes check marks.
class TrayMenu {
  public:
    // `onChosen` receives the position of the chosen item, counted from 0 including separators.
    explicit TrayMenu(std::function<void(std::size_t position)> onChosen) : onChosen_(std::move(onChosen)) {}

    void show(const Menu& menu);
    // Opens the menu next to the icon, above it if there is no space below.
    void popUp(const QRect& icon);

    QMenu& widget() { return widget_; }

  private:
    bool hasLayoutOf(const Menu& menu) const;
    void rebuild(const Menu& menu);
    void refresh(std::size_t position);

    std::function<void(std::size_t position)> onChosen_;
    Menu menu_;
    MenuWidget widget_;
};

}  // namespace kovra
