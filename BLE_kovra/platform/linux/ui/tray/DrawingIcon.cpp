#include "BLE_kovra/platform/linux/ui/tray/DrawingIcon.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <variant>

#include "BLE_kovra/platform/linux/ui/style/PaintedIcon.h"

namespace kovra {

namespace {

constexpr qreal outline = 0.8;  // points, on each side of a line
constexpr QColor light(255, 255, 255);
constexpr QColor dark(32, 32, 32);

struct PathOf {
    QPainterPath operator()(const RoundedRectangle& rectangle) const {
        QPainterPath path;
        path.addRoundedRect(QRectF(rectangle.origin.x, rectangle.origin.y, rectangle.size.width, rectangle.size.height),
                            rectangle.cornerRadii.width, rectangle.cornerRadii.height);
        return path;
    }
    QPainterPath operator()(const Segment& segment) const {
        QPainterPath path(QPointF(segment.from.x, segment.from.y));
        path.lineTo(segment.to.x, segment.to.y);
        return path;
    }
};

// Returns the area that the strokes cover.
QPainterPath inkOf(const Drawing& drawing) {
    QPainterPath ink;
    for (const Stroke& stroke : drawing.strokes) {
        QPainterPathStroker stroker;
        stroker.setWidth(stroke.lineWidth);
        stroker.setCapStyle(Qt::FlatCap);
        ink = ink.united(stroker.createStroke(std::visit(PathOf(), stroke.shape)));
    }
    return ink;
}

}  // namespace

void paintDrawing(QPainter& painter, const QRectF& rect, const Drawing& drawing, bool isTemplate) {
    if (!(drawing.size.width > 0 && drawing.size.height > 0)) return;
    const qreal scale = std::min(rect.width() / drawing.size.width, rect.height() / drawing.size.height);
    const QPainterPath ink = inkOf(drawing);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center());
    painter.scale(scale, -scale);  // a drawing's y axis points up
    painter.translate(-drawing.size.width / 2, -drawing.size.height / 2);
    if (isTemplate) painter.strokePath(ink, QPen(dark, 2 * outline, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
    painter.fillPath(ink, isTemplate ? light : QColor(Qt::black));
    painter.restore();
}

QIcon drawingIcon(const Drawing& drawing, bool isTemplate) {
    return paintedIcon([drawing, isTemplate](QPainter& painter, const QRectF& rect) {
        paintDrawing(painter, rect, drawing, isTemplate);
    });
}

}  // namespace kovra
