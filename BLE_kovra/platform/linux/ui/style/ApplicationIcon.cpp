#include "BLE_kovra/platform/linux/ui/style/ApplicationIcon.h"

#include <QPainter>
#include <algorithm>
#include <variant>

#include "BLE_kovra/platform/linux/ui/style/PaintedIcon.h"

namespace kovra {

namespace {

struct Paint {
    void operator()(const RoundedRectangle& rectangle) const {
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawRoundedRect(
            QRectF(rectangle.origin.x, rectangle.origin.y, rectangle.size.width, rectangle.size.height),
            rectangle.cornerRadii.width, rectangle.cornerRadii.height);
    }
    void operator()(const Segment& segment) const {
        painter.setPen(QPen(color, lineWidth, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(segment.from.x, segment.from.y), QPointF(segment.to.x, segment.to.y));
    }

    QPainter& painter;
    QColor color;
    double lineWidth;
};

}  // namespace

void paintPicture(QPainter& painter, const QRectF& rect, const ColoredPicture& picture) {
    const qreal scale = std::min(rect.width() / picture.size.width, rect.height() / picture.size.height);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center());
    painter.scale(scale, -scale);  // a picture's y axis points up
    painter.translate(-picture.size.width / 2, -picture.size.height / 2);
    for (const auto& layer : picture.layers) {
        std::visit(Paint{painter, QColor::fromRgb(layer.color), layer.lineWidth}, layer.shape);
    }
    painter.restore();
}

// Task bars show 16 to 48 pixels. The toolkit would offer 128 pixels as well, and painting those takes longer than
// painting all text of the settings window.
QIcon windowIcon() {
    return paintedIcon(
        [picture = applicationIcon()](QPainter& painter, const QRectF& rect) { paintPicture(painter, rect, picture); },
        {16, 32, 64});
}

}  // namespace kovra
