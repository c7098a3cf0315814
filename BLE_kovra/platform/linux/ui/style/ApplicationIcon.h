#pragma once

#include <QIcon>

#include "BLE_kovra/platform/ApplicationIcon.h"

class QPainter;
class QRectF;

namespace kovra {

// Paints the picture centered, at the largest size that fits the rectangle.
void paintPicture(QPainter& painter, const QRectF& rect, const ColoredPicture& picture);

// Returns the application's icon for its windows, repainted for each size and scale.
QIcon windowIcon();

}  // namespace kovra
