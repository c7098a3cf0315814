#pragma once

#include <QPointer>
#include <cstdint>
#include <memory>
#include <vector>

#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/elements/Surface.h"

namespace kovra {

// The elements that show a view on a surface.
class ElementTree {
  public:
    // The surface and the actions must outlive the tree.
    ElementTree(Surface& surface, UserActions& actions) : surface_(surface), actions_(actions) {}
    ~ElementTree() { surface_.setElement(nullptr); }
    ElementTree(const ElementTree&) = delete;
    ElementTree& operator=(const ElementTree&) = delete;

    // Shows another view. An element that can show a part of it is kept, so that its focus and a click in progress are
    // preserved. If the focused widget is removed, its neighbor receives the focus. The view includes the user's
    // changes up to number `acknowledged`.
    void show(const View& view, std::uint64_t acknowledged);

    // Lays out the elements, centered in an area of this size.
    void layOut(const QSize& size);
    // Returns the smallest height in pixels at which nothing is truncated, for this width.
    int minimumHeight(int width);

  private:
    void orderWidgets();

    Surface& surface_;
    UserActions& actions_;
    std::unique_ptr<Element> root_;
    std::vector<QPointer<QWidget>> widgets_;  // from top to bottom
};

}  // namespace kovra
