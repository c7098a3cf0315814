#pragma once

#include <QMenu>
#include <cstddef>
#include <functional>
#include <utility>

#include "BLE_kovra/platform/Menu.h"

namespace kovra {

// The status item's menu. Its texts are shown as they are. It shows no check mark but what it was told: after a choice
// it waits to be told what came of it.
class TrayMenu {
  public:
    // `onChosen` is given the item's position, counted from 0 with the separator.
    explicit TrayMenu(std::function<void(std::size_t position)> onChosen) : onChosen_(std::move(onChosen)) {}

    void show(const Menu& menu);
    // Opens at the icon, without covering it where there is room.
    void popUp(const QRect& icon);

    QMenu& widget() { return widget_; }

  private:
    bool hasShapeOf(const Menu& menu) const;
    void rebuild(const Menu& menu);
    void refresh(std::size_t position);

    std::function<void(std::size_t position)> onChosen_;
    Menu menu_;
    QMenu widget_;
};

}  // namespace kovra
