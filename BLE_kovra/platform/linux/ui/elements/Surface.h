#pragma once

#include <QWidget>

#include "BLE_kovra/platform/linux/ui/elements/Element.h"

namespace kovra {

// The widget that contains the elements of a window or of a scroll area. It paints the elements without a widget of
// their own.
class Surface : public QWidget {
  public:
    using QWidget::QWidget;

    // The element must exist for as long as the surface is painted. If it is null, the surface paints nothing.
    void setElement(Element* element) { element_ = element; }

  private:
    void paintEvent(QPaintEvent* event) override;

    Element* element_ = nullptr;
};

}  // namespace kovra
