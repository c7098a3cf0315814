#pragma once

#include <QColor>
#include <QIcon>
#include <optional>

#include "BLE_kovra/platform/Drawing.h"

class QPainter;
class QRectF;

namespace kovra {

// The colors of a drawing. A line of the color `outline` surrounds its strokes, if there is one.
struct DrawingColors {
    QColor ink = Qt::black;
    std::optional<QColor> outline = std::nullopt;
};

// Paints the drawing centered, at the largest size that fits the rectangle. For few pixels it paints the glyph of the
// drawing.
void paintDrawing(QPainter& painter, const QRectF& rect, const Drawing& drawing, const DrawingColors& colors);

// Returns the drawing as an icon, repainted for each size and scale.
QIcon drawingIcon(const Drawing& drawing, const DrawingColors& colors);

}  // namespace kovra
