#pragma once

#include <QPointer>
#include <cstdint>
#include <memory>
#include <vector>

#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/elements/Surface.h"

namespace kovra {

// A view as widgets on a surface.
class ViewRealiser {
  public:
    // Both outlive it.
    ViewRealiser(Surface& surface, UserActions& actions) : surface_(surface), actions_(actions) {}
    ~ViewRealiser() { surface_.setElement(nullptr); }
    ViewRealiser(const ViewRealiser&) = delete;
    ViewRealiser& operator=(const ViewRealiser&) = delete;

    // From now on this view. What is the same stays as it is, with the focus, and with a click that is half made; where
    // what had the focus is gone, its neighbour gets it. `heard` is the last of the user's changes that it knows of.
    void show(const View& view, std::uint64_t heard);

    // Lays it out in the middle of a room of this size.
    void layOut(const QSize& room);
    // The height below which something would be cut.
    int leastHeight(int width);

  private:
    void orderWidgets();

    Surface& surface_;
    UserActions& actions_;
    std::unique_ptr<Element> root_;
    std::vector<QPointer<QWidget>> widgets_;  // from the top to the bottom
};

}  // namespace kovra
