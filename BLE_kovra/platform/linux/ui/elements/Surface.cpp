#include "BLE_kovra/platform/linux/ui/elements/Surface.h"

#include <QPainter>

namespace kovra {

void Surface::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (element_ != nullptr) element_->paint(painter);
}

}  // namespace kovra
