#include "BLE_kovra/platform/linux/ui/style/Paragraph.h"

#include <QColor>
#include <QFontMetrics>
#include <QPainter>
#include <QRect>
#include <QTextOption>
#include <algorithm>
#include <cmath>

#include "BLE_kovra/platform/linux/ui/style/Points.h"

namespace kovra {

namespace {

constexpr int fewLetters = 6;

bool breaksLines(QChar c) { return c.category() == QChar::Other_Control || c == QChar(0x2028) || c == QChar(0x2029); }

}  // namespace

QString plainText(const std::string& text) {
    QString plain = QString::fromStdString(text);
    for (QChar& c : plain) {
        if (breaksLines(c)) c = QLatin1Char(' ');
    }
    return plain;
}

bool Paragraph::set(const QString& text, const QFont& font) {
    if (width_ >= 0 && text == text_ && font == font_) return false;
    text_ = text;
    font_ = font;
    layout_.setText(text);
    layout_.setFont(font);
    layout_.setCacheEnabled(true);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout_.setTextOption(option);
    width_ = -1;
    layOut(unboundedLength);
    preferredWidth_ = static_cast<int>(std::ceil(layout_.maximumWidth()));
    minimumWidth_ = std::min(preferredWidth_, fewLetters * QFontMetrics(font_).averageCharWidth());
    return true;
}

int Paragraph::heightForWidth(int width) {
    layOut(width);
    return height_;
}

void Paragraph::paint(QPainter& painter, const QRect& rect, const QColor& color) {
    layOut(rect.width());
    painter.setPen(color);
    layout_.draw(&painter, rect.topLeft());
}

void Paragraph::layOut(int width) {
    const bool isOneLineAgain = std::min(width, width_) >= preferredWidth_;
    if (width_ >= 0 && (width == width_ || isOneLineAgain)) return;
    width_ = width;
    qreal bottom = 0;
    layout_.beginLayout();
    for (QTextLine line = layout_.createLine(); line.isValid(); line = layout_.createLine()) {
        line.setLineWidth(width);
        line.setPosition(QPointF(0, bottom));
        bottom += std::ceil(line.height());
    }
    layout_.endLayout();
    height_ = static_cast<int>(bottom);
}

}  // namespace kovra
