#pragma once

#include <QIcon>

#include "BLE_kovra/platform/ApplicationIcon.h"

class QPainter;
class QRectF;

namespace kovra {

// Paints the picture as large as fits into the place, in its middle.
void paintPicture(QPainter& painter, const QRectF& place, const ColoredPicture& picture);

// The application's icon for its windows, painted anew for each size and scale.
QIcon windowIcon();

}  // namespace kovra
