#include "BLE_kovra/platform/linux/ui/elements/PaintedElements.h"

#include <QPainter>
#include <QPalette>
#include <QWidget>

#include "BLE_kovra/platform/linux/ui/style/Points.h"

namespace kovra {

void PaintedElement::placeKind(const QRect& place) {
    if (place == place_) return;
    repaint();
    place_ = place;
    repaint();
}

void PaintedElement::repaint() const { site().host.update(place_); }

void LabelElement::showKind(const View& view, const TextStyle& style, std::uint64_t) {
    const bool isOther = paragraph_.set(plainText(std::get<Text>(view.kind).content), style.qtFont());
    if (isOther || style.color != color_) repaint();
    color_ = style.color;
}

Wish LabelElement::kindWidth() { return {paragraph_.leastWidth(), paragraph_.idealWidth(), false}; }

Wish LabelElement::kindHeight(int width) {
    const int height = paragraph_.heightFor(width);
    return {height, height, false};
}

void LabelElement::paint(QPainter& painter) {
    paragraph_.paint(painter, place(), roleColor(color_, site().host.palette()));
}

void CircleElement::showKind(const View& view, const TextStyle&, std::uint64_t) {
    const auto& circle = std::get<Circle>(view.kind);
    if (circle == circle_) return;
    circle_ = circle;
    repaint();
}

void CircleElement::paint(QPainter& painter) {
    QColor color = roleColor(circle_.fill, site().host.palette());
    color.setAlphaF(static_cast<float>(circle_.opacity));
    const int side = std::min(place().width(), place().height());
    QRectF round(0, 0, side, side);
    round.moveCenter(QRectF(place()).center());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(round);
    painter.restore();
}

void DividerElement::paint(QPainter& painter) {
    QColor color = site().host.palette().color(QPalette::WindowText);
    color.setAlphaF(0.2F);
    painter.fillRect(place(), color);
}

}  // namespace kovra
