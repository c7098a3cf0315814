#pragma once

#include <QIcon>

#include "BLE_kovra/platform/Drawing.h"

class QPainter;
class QRectF;

namespace kovra {

// Paints the drawing centered, at the largest size that fits the rectangle.
//
// The background is unknown. Therefore a template is white with a thin dark outline, which stands out on light and dark
// panels. Any other drawing is black.
void paintDrawing(QPainter& painter, const QRectF& rect, const Drawing& drawing, bool isTemplate);

// Returns the drawing as an icon, repainted for each size and scale.
QIcon drawingIcon(const Drawing& drawing, bool isTemplate);

}  // namespace kovra
