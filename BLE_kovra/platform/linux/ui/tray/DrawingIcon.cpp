#include "BLE_kovra/platform/linux/ui/tray/DrawingIcon.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <variant>

#include "BLE_kovra/platform/linux/ui/style/PaintedIcon.h"

namespace kovra {

namespace {

constexpr qreal outlineShare = 0.045;  // of the width: the outline on each side of a line

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

// Returns the area that the strokes cover, without the gaps.
QPainterPath inkOf(const Drawing& drawing) {
    QPainterPath ink;
    for (const Stroke& stroke : drawing.strokes) {
        QPainterPathStroker stroker;
        stroker.setWidth(stroke.lineWidth);
        stroker.setCapStyle(Qt::FlatCap);
        const QPainterPath area = stroker.createStroke(std::visit(PathOf(), stroke.shape));
        ink = stroke.isGap ? ink.subtracted(area) : ink.united(area);
    }
    return ink;
}

}  // namespace

void paintDrawing(QPainter& painter, const QRectF& rect, const Drawing& drawing, const DrawingColors& colors) {
    const qreal ratio = painter.device()->devicePixelRatio();
    const Drawing shown = fittedTo(qRound(std::min(rect.width(), rect.height()) * ratio), drawing);
    if (!(shown.size.width > 0 && shown.size.height > 0)) return;
    const qreal scale = std::min(rect.width() / shown.size.width, rect.height() / shown.size.height);
    const QPainterPath ink = inkOf(shown);
    const qreal outline = outlineShare * shown.size.width;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center());
    painter.scale(scale, -scale);  // a drawing's y axis points up
    painter.translate(-shown.size.width / 2, -shown.size.height / 2);
    if (colors.outline) {
        painter.strokePath(ink, QPen(*colors.outline, 2 * outline, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
    }
    painter.fillPath(ink, colors.ink);
    painter.restore();
}

QIcon drawingIcon(const Drawing& drawing, const DrawingColors& colors) {
    return paintedIcon(
        [drawing, colors](QPainter& painter, const QRectF& rect) { paintDrawing(painter, rect, drawing, colors); });
}

}  // namespace kovra
