#pragma once

#include <QWidget>

#include "BLE_kovra/platform/linux/ui/elements/Element.h"

namespace kovra {

// The bare widget that the elements of a window, or of a scrolled list, stand on. It paints those that have no widget.
class Surface : public QWidget {
  public:
    using QWidget::QWidget;

    // Outlives neither. None: nothing to paint.
    void setElement(Element* element) { element_ = element; }

  private:
    void paintEvent(QPaintEvent* event) override;

    Element* element_ = nullptr;
};

}  // namespace kovra
