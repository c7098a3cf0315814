#pragma once

#include <QIcon>

#include "BLE_kovra/platform/ApplicationIcon.h"

class QPainter;
class QRectF;

namespace kovra {

// Paints the picture centered, as large as fits into the rectangle.
void paintPicture(QPainter& painter, const QRectF& rect, const ColoredPicture& picture);

// The application's icon for its windows, repainted for each size and scale.
QIcon windowIcon();

}  // namespace kovra
