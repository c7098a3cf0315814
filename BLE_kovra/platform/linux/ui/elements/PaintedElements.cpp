#include "BLE_kovra/platform/linux/ui/elements/PaintedElements.h"

#include <QPainter>
#include <QPalette>
#include <QWidget>
#include <algorithm>

#include "BLE_kovra/platform/linux/ui/style/Points.h"

namespace kovra {

void PaintedElement::placeContent(const QRect& rect) {
    if (rect == rect_) return;
    repaint();
    rect_ = rect;
    repaint();
}

void PaintedElement::repaint() const { site().host.update(rect_); }

void LabelElement::showContentOf(const View& view, const TextStyle& style, std::uint64_t) {
    const bool isNew = paragraph_.set(plainText(std::get<Text>(view.kind).content), style.qtFont());
    if (isNew || style.color != color_) repaint();
    color_ = style.color;
}

SizeHint LabelElement::contentWidth() { return {paragraph_.minimumWidth(), paragraph_.preferredWidth(), false}; }

SizeHint LabelElement::contentHeight(int width) {
    const int height = paragraph_.heightForWidth(width);
    return {height, height, false};
}

void LabelElement::paint(QPainter& painter) {
    paragraph_.paint(painter, rect(), roleColor(color_, site().host.palette()));
}

void CircleElement::showContentOf(const View& view, const TextStyle&, std::uint64_t) {
    const auto& circle = std::get<Circle>(view.kind);
    if (circle == circle_) return;
    circle_ = circle;
    repaint();
}

void CircleElement::paint(QPainter& painter) {
    QColor color = roleColor(circle_.fill, site().host.palette());
    color.setAlphaF(static_cast<float>(circle_.opacity));
    const int side = std::min(rect().width(), rect().height());
    QRectF circle(0, 0, side, side);
    circle.moveCenter(QRectF(rect()).center());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(circle);
    painter.restore();
}

void DividerElement::paint(QPainter& painter) {
    const QPalette& palette = site().host.palette();
    painter.fillRect(rect(), separatorColor(palette.color(QPalette::WindowText), palette.color(QPalette::Window)));
}

}  // namespace kovra
