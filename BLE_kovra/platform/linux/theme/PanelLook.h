#pragma once

#include <utility>

#include "BLE_kovra/platform/linux/loop/Listeners.h"
#include "BLE_kovra/platform/linux/theme/IconLook.h"

namespace kovra {

// The look of the status item's icon that suits the panel at present.
class PanelLook {
  public:
    explicit PanelLook(IconLook look) : look_(look) {}
    PanelLook(const PanelLook&) = delete;
    PanelLook& operator=(const PanelLook&) = delete;

    IconLook look() const { return look_; }
    // Notifies the listeners if the look is another one.
    void set(IconLook look) {
        if (std::exchange(look_, look) != look) changes_.call();
    }

    // Notifies the listeners that the panel may not have painted this look in its present colors.
    void repeat() { changes_.call(); }

    using Changes = Listeners<>;
    [[nodiscard]] Changes::Token listen(Changes::Listener changed) { return changes_.add(std::move(changed)); }

  private:
    IconLook look_;
    Changes changes_;
};

}  // namespace kovra
