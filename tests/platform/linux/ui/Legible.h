#pragma once

#include <QFontMetrics>
#include <QLabel>
#include <QPushButton>
#include <QTextLayout>
#include <QWidget>

namespace kovra {

// The height of a text that is broken into lines of a given width, and whether every word fits into a line.
struct SetText {
    double height = 0;
    bool fits = true;
};
inline SetText setText(const QString& text, const QFont& font, double width) {
    SetText set;
    for (const QString& paragraph : text.split('\n')) {
        QTextLayout layout(paragraph, font);
        QTextOption option;
        option.setWrapMode(QTextOption::WordWrap);
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width);
            set.height += line.height();
            if (line.naturalTextWidth() > width) set.fits = false;
        }
        layout.endLayout();
    }
    return set;
}

// Returns whether the whole text is visible: it fits into the label, and nothing clips the label.
inline bool isWhole(const QLabel& label) {
    const QRect space = label.contentsRect();
    const SetText text = setText(label.text(), label.font(), space.width());
    const QRect inWindow(label.mapTo(label.window(), QPoint()), label.size());
    return text.fits && text.height <= space.height() && label.window()->rect().contains(inWindow) &&
           label.visibleRegion().boundingRect() == label.rect();
}

inline bool isWhole(const QPushButton& button) {
    const QString text = button.text().replace("&&", "&");
    const QRect inWindow(button.mapTo(button.window(), QPoint()), button.size());
    return button.fontMetrics().horizontalAdvance(text) < button.width() &&
           button.fontMetrics().height() < button.height() && button.window()->rect().contains(inWindow);
}

}  // namespace kovra
