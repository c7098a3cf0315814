#include "BLE_kovra/platform/linux/ui/elements/TextElement.h"

#include <QPainter>

namespace kovra {

TextLabel::TextLabel(QWidget& parent) : QLabel(&parent) { setTextFormat(Qt::PlainText); }

void TextLabel::show(const QString& text, const QFont& font, Color color) {
    setText(text);
    if (paragraph_.set(text, font) || color != color_) update();
    color_ = color;
    QLabel::show();
}

void TextLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paragraph_.paint(painter, rect(), roleColor(color_, palette()));
}

TextElement::TextElement(const Site& site) : Element(site), label_(std::make_unique<TextLabel>(site.host)) {}

void TextElement::showContentOf(const View& view, const TextStyle& style, std::uint64_t) {
    label_->show(plainText(std::get<Text>(view.kind).content), style.qtFont(), style.color);
}

SizeHint TextElement::contentWidth() {
    return {label_->paragraph().minimumWidth(), label_->paragraph().preferredWidth(), false};
}

SizeHint TextElement::contentHeight(int width) {
    const int height = label_->paragraph().heightForWidth(width);
    return {height, height, false};
}

void TextElement::placeContent(const QRect& rect) { label_->setGeometry(rect); }

}  // namespace kovra
