#pragma once

#include <QPointer>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/elements/Surface.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// A view as widgets on a surface, and what the user does to them.
class ViewRealiser : private UserActions {
  public:
    explicit ViewRealiser(Surface& surface);
    ~ViewRealiser() override;

    // From now on this view. What is the same stays as it is, with the focus, and with a click that is half made; where
    // what had the focus is gone, its neighbour gets it. `heard` is the last of the user's changes that it knows of.
    void show(const View& view, std::uint64_t heard);

    // Lays it out in the middle of a room of this size.
    void layOut(const QSize& room);
    // The height below which something would be cut.
    int leastHeight(int width);

    std::function<void(const ControlChanged& change)> onChanged;
    std::function<void(const LinkFollowed& link)> onFollowed;
    std::function<void()> onScrolled;

  private:
    std::uint64_t changed(std::vector<std::string> path, std::variant<bool, std::string> value) override;
    void followed(std::vector<std::string> path) override;
    void scrolled() override;

    void orderWidgets();

    Surface& surface_;
    std::unique_ptr<Element> root_;
    std::vector<QPointer<QWidget>> widgets_;  // from the top to the bottom
    std::uint64_t number_ = 0;                // of the user's last change
};

}  // namespace kovra
