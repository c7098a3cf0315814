#pragma once

#include <QIcon>

#include "BLE_kovra/platform/Drawing.h"

class QPainter;
class QRectF;

namespace kovra {

// Paints the drawing as large as fits into the place, in its middle.
//
// What is behind it cannot be known. A template is therefore painted in white with a thin dark outline, which stands
// out from a light panel and from a dark one; any other drawing in black.
void paintDrawing(QPainter& painter, const QRectF& place, const Drawing& drawing, bool isTemplate);

// The drawing as an icon, which is painted anew for each size and scale.
QIcon drawingIcon(const Drawing& drawing, bool isTemplate);

}  // namespace kovra
